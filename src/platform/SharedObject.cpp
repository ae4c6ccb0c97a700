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

std::vector<std::string> LibraryPlaces(const LibrarySources& sources, const std::string& strFile) {
    std::vector<std::string> places;
    const size_t nName = sources.strExecutable.rfind('/');
    if (nName != std::string::npos) {
        const std::string strFolder = sources.strExecutable.substr(0, nName);
        places.push_back(strFolder + "/" + strFile);
        // Only from a folder that has the name for it: beside any other one stand strangers.
        const std::string strPrograms = "/" + sources.strPrograms;
        if (!sources.strPrograms.empty() && !sources.strLibraries.empty() &&
            strFolder.ends_with(strPrograms)) {
            places.push_back(strFolder.substr(0, strFolder.size() - strPrograms.size()) + "/" +
                             sources.strLibraries + "/" + strFile);
        }
    }
    places.push_back(sources.strConfigured + "/" + strFile);
    return places;
}

std::vector<std::string> LibraryPlaces(const std::string& strFile) {
    return LibraryPlaces({ExecutableFile(), BRENNIK_PROGRAMS_BELOW_PREFIX,
                          BRENNIK_LIBRARIES_BELOW_PREFIX, BRENNIK_INSTALLED_LIBRARIES},
                         strFile);
}

} // namespace brennik
