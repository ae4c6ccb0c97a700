#include "platform/SharedObject.h"

#include "platform/ProgramFolder.h"

#include <dlfcn.h>
#include <unistd.h>

namespace brennik {

namespace {

// The loader's words, which name the file and what is wrong with it.
std::string LoaderFailure() {
    const char* strFailure = ::dlerror();
    std::string strLine = strFailure != nullptr ? strFailure : "the loader gives no reason";
    for (char& c : strLine) {
        if (c == '\n') {
            c = ' ';
        }
    }
    return strLine;
}

} // namespace

SharedFunction FindSharedFunction(const std::vector<std::string>& strFiles, const char* strName) {
    SharedFunction found;
    for (const std::string& strFile : strFiles) {
        if (::access(strFile.c_str(), F_OK) != 0) {
            continue;
        }
        found.strPath = strFile;
        void* const object = ::dlopen(strFile.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (object != nullptr) {
            found.function = reinterpret_cast<void (*)()>(::dlsym(object, strName));
        }
        if (found.function == nullptr) {
            found.strFailure = LoaderFailure();
        }
        return found;
    }
    return found;
}

std::vector<std::string> LibraryPlaces(const std::string& strFile) {
    const std::string strExecutable = ExecutableFile();
    return {strExecutable.substr(0, strExecutable.rfind('/') + 1) + strFile,
            BRENNIK_INSTALLED_LIBRARIES "/" + strFile};
}

} // namespace brennik
