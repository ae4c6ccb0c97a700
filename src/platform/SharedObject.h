// A function of a shared object that is loaded at run time, for parts that most runs don't need.
// It stands on the dynamic loader; its tests load objects that they make themselves.
#pragma once

#include <string>
#include <vector>

namespace brennik {

struct SharedFunction {
    void (*function)() = nullptr; ///< to be cast to what it is; nothing when it can't be had
    std::string strPath;          ///< the object that was taken
    std::string strFailure;       ///< why it can't be had, in one line; empty when no file is there
};

/// Loads the first of the files that exists and looks the function up in it. An object that was
/// loaded stays for as long as the process lives.
SharedFunction FindSharedFunction(const std::vector<std::string>& strFiles, const char* strName);

/// The places of a library that belongs to the program: beside the executable, then the folder in
/// which libraries are installed.
std::vector<std::string> LibraryPlaces(const std::string& strFile);

} // namespace brennik
