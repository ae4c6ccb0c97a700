#include "platform/ProgramFolder.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

ProgramFolderSources Installed() {
    ProgramFolderSources sources;
    sources.strExecutable = "/usr/local/bin/brennikclient";
    sources.strInstalledProgram = "/usr/local/bin/brennikclient";
    sources.strHome = "/home/pos";
    sources.strCurrentFolder = "/tmp";
    return sources;
}

void ExpectChoice(const ProgramFolderSources& sources, const std::string& strFolder, bool bCreate) {
    const ProgramFolderChoice choice = ChooseProgramFolder(sources);
    EXPECT_EQ(choice.strFolder, strFolder);
    EXPECT_EQ(choice.bCreate, bCreate);
}

TEST(ProgramFolder, TheEnvironmentNamesItFirst) {
    ProgramFolderSources sources = Installed();
    sources.strBrennikHome = "/srv/brennik//";
    ExpectChoice(sources, "/srv/brennik", false);
    sources.strBrennikHome = "/";
    ExpectChoice(sources, "/", false);
}

TEST(ProgramFolder, ARelativeNameInTheEnvironmentBeginsAtTheCurrentFolder) {
    ProgramFolderSources sources = Installed();
    sources.strBrennikHome = "here/";
    ExpectChoice(sources, "/tmp/here", false);
}

TEST(ProgramFolder, AnInstalledProgramKeepsItsFilesInTheUsersDataFolder) {
    ProgramFolderSources sources = Installed();
    ExpectChoice(sources, "/home/pos/.local/share/brennikclient", true);
    sources.strDataHome = "/data/pos/";
    ExpectChoice(sources, "/data/pos/brennikclient", true);
    sources.strDataHome = "relative";
    ExpectChoice(sources, "/home/pos/.local/share/brennikclient", true);
}

TEST(ProgramFolder, AnyOtherProgramHasTheFolderItStandsIn) {
    ProgramFolderSources sources = Installed();
    sources.strExecutable = "/home/pos/build/brennikclient";
    sources.strDataHome = "/data/pos";
    ExpectChoice(sources, "/home/pos/build", false);
    sources.strExecutable = "/brennikclient";
    ExpectChoice(sources, "/", false);
}

TEST(ProgramFolder, AnInstalledProgramOfAUserWithoutAHomeHasTheFolderItStandsIn) {
    ProgramFolderSources sources = Installed();
    sources.strHome = "";
    ExpectChoice(sources, "/usr/local/bin", false);
}

TEST(ProgramFolder, IsTheCurrentFolderWhenTheExecutableIsUnknown) {
    ProgramFolderSources sources = Installed();
    sources.strExecutable = "";
    ExpectChoice(sources, "/tmp", false);
}

} // namespace
} // namespace brennik
