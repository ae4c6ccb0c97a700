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

/// What the places of a library rest on; an empty text is a value that isn't known.
struct LibrarySources {
    std::string strExecutable; ///< the file that runs, as a whole path
    std::string strPrograms;   ///< where programs are installed below a prefix, for example "bin"
    std::string strLibraries;  ///< where libraries are, below the same prefix
    std::string strConfigured; ///< where libraries are installed, as a whole path
};

/// The places of a library that belongs to the program: beside the executable; where the libraries
/// of its prefix are, for a program that was installed below another prefix than the one it was
/// built for; and the folder in which libraries are installed.
std::vector<std::string> LibraryPlaces(const LibrarySources& sources, const std::string& strFile);

/// The places for this process.
std::vector<std::string> LibraryPlaces(const std::string& strFile);

} // namespace brennik
