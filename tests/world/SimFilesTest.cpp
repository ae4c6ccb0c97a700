#include "tests/world/SimFiles.h"

#include "tests/world/SimHost.h"

namespace brennik::world {
namespace {

#define EXPECT_FAILS(statement, failureKind)                                                       \
    EXPECT_EQ(FailureOf([&] { static_cast<void>(statement); }), failureKind)

class SimFilesTest : public WorldTest {
  protected:
    SimFiles& files = host.files;

    template <class Body>
    static std::optional<FailureKind> FailureOf(Body&& body) {
        try {
            body();
        } catch (const RuntimeFailure& failure) {
            return failure.Kind();
        }
        return std::nullopt;
    }
    std::vector<std::string> Found(const std::string& strPattern) {
        std::vector<std::string> names;
        for (const FoundFile& found : files.Find(strPattern)) {
            names.push_back(found.strName + (found.bFolder ? "/" : ""));
        }
        return names;
    }
};

TEST_F(SimFilesTest, StartsWithTheHomeAndTheProgramFolder) {
    EXPECT_EQ(files.Tree(),
              (std::vector<std::string>{"/home/", "/home/user/", "/opt/", "/opt/brennik/"}));
}

TEST_F(SimFilesTest, TakesTextsInAnyForm) {
    files.Put("C:\\pos\\a.txt", "1");
    EXPECT_EQ(files.Get("/pos/a.txt"), "1");
    EXPECT_EQ(files.Get("\\pos\\a.txt"), "1");
    EXPECT_EQ(files.Get("c:/pos//./x/../a.txt"), std::nullopt); // x is no folder
    EXPECT_EQ(files.Get("c:/pos//./a.txt"), "1");
    EXPECT_EQ(files.Get("C:\\POS\\a.txt"), std::nullopt); // names are case-sensitive
    for (const char* strNowhere : {"", "\\\\server\\pos\\a.txt", "D:\\pos\\a.txt"}) {
        EXPECT_FAILS(files.OpenText(strNowhere, OpenMode::Read), FailureKind::PathNotFound);
        EXPECT_FALSE(files.FolderExists(strNowhere));
    }
    files.SetDrives({{'C', "/"}, {'D', "/srv/data"}});
    files.Put("D:\\b", "2");
    EXPECT_EQ(files.Get("/srv/data/b"), "2");
    EXPECT_EQ(files.Tree("D:\\"), (std::vector<std::string>{"b"}));
}

TEST_F(SimFilesTest, RelativePathsBeginAtTheCurrentFolder) {
    files.Put("a", "1");
    EXPECT_EQ(files.Get("/home/user/a"), "1");
    files.SetCurrentFolder("C:\\opt");
    EXPECT_FALSE(files.Get("a"));
    EXPECT_FAILS(files.SetCurrentFolder("/none"), FailureKind::PathNotFound);
}

TEST_F(SimFilesTest, StreamsReadWriteAndAppend) {
    files.MakeFolder("/pos");
    auto stream = files.OpenText("C:\\pos\\a", OpenMode::Write);
    stream->Write(std::string("a\0", 2));
    stream->WriteLine("b");
    EXPECT_FAILS(stream->ReadAll(), FailureKind::BadFileMode);
    EXPECT_EQ(files.nOpenStreams(), 1);
    stream->Close();
    stream->Close();
    EXPECT_EQ(files.nOpenStreams(), 0);
    EXPECT_FAILS(stream->Write("x"), FailureKind::BadFileNumber);
    EXPECT_FAILS(stream->AtEndOfStream(), FailureKind::BadFileNumber);
    EXPECT_EQ(files.Get("/pos/a"), std::string("a\0b\r\n", 5));

    stream = files.OpenText("/pos/a", OpenMode::Append);
    stream->Write("c\nd");
    stream = files.OpenText("/pos/a", OpenMode::Read);
    EXPECT_FAILS(stream->Write("x"), FailureKind::BadFileMode);
    EXPECT_EQ(stream->Read(1), "a");
    EXPECT_EQ(stream->ReadLine(), std::string("\0b", 2));
    EXPECT_EQ(stream->ReadLine(), "c");
    EXPECT_FALSE(stream->AtEndOfStream());
    EXPECT_EQ(stream->ReadLine(), "d");
    EXPECT_TRUE(stream->AtEndOfStream());
    EXPECT_FAILS(stream->ReadLine(), FailureKind::InputPastEndOfFile);
    EXPECT_EQ(stream->ReadAll(), "");
    EXPECT_EQ(stream->Read(5), "");
    stream = files.OpenText("/pos/a", OpenMode::Write);
    EXPECT_EQ(files.Get("/pos/a"), "");
}

TEST_F(SimFilesTest, OpeningFailsAsItShould) {
    files.MakeFolder("/pos");
    files.Put("/pos/ro", "x");
    files.SetReadOnly("/pos/ro", true);
    EXPECT_FAILS(files.OpenText("/pos/none", OpenMode::Read), FailureKind::FileNotFound);
    EXPECT_FAILS(files.OpenText("/none/a", OpenMode::Write), FailureKind::PathNotFound);
    EXPECT_FAILS(files.OpenText("/pos", OpenMode::Write), FailureKind::PermissionDenied);
    EXPECT_FAILS(files.OpenText("/pos/ro", OpenMode::Write), FailureKind::PermissionDenied);
    EXPECT_FAILS(files.OpenText("/pos/ro/a", OpenMode::Read), FailureKind::PathNotFound);
    EXPECT_EQ(FailureOf([&] { files.OpenText("/pos/ro", OpenMode::Read); }), std::nullopt);
}

TEST_F(SimFilesTest, AStreamOutlivesTheNameOfItsFile) {
    files.Put("/a", "text");
    const auto stream = files.OpenText("/a", OpenMode::Read);
    files.DeleteFile("/a");
    EXPECT_EQ(stream->ReadAll(), "text");
    EXPECT_FALSE(files.Exists("/a"));
}

TEST_F(SimFilesTest, AppendLineIsOneWrite) {
    files.AppendLine("/log", "one\r\n");
    files.AppendLine("/log", "two\r\n");
    EXPECT_EQ(files.Get("/log"), "one\r\ntwo\r\n");
    EXPECT_EQ(files.Lines("/log"), (std::vector<std::string>{"one", "two"}));
    EXPECT_EQ(files.nWrites(), 2);
    EXPECT_EQ(host.nFailable(), 2);
}

TEST_F(SimFilesTest, AQuotaTakesWhatFitsAndFailsThen) {
    files.Put("/old", "12345");
    files.SetQuota(10);
    const auto stream = files.OpenText("/new", OpenMode::Write);
    stream->Write("abc");
    EXPECT_FAILS(stream->Write("defgh"), FailureKind::DiskFull);
    EXPECT_EQ(files.Get("/new"), "abcde");
    EXPECT_FAILS(stream->Write("x"), FailureKind::DiskFull);
    EXPECT_FAILS(files.AppendLine("/new", "\r\n"), FailureKind::DiskFull);
    EXPECT_EQ(files.Get("/new"), "abcde"); // a line is written whole or not at all
    EXPECT_EQ(files.TotalBytes(), 10);
    files.Remove("/old");
    stream->Write("xy");
    EXPECT_EQ(files.Get("/new"), "abcdexy");
}

TEST_F(SimFilesTest, PathsCanBeDenied) {
    files.Put("/pos/a", "1");
    files.Deny("C:\\pos\\a");
    EXPECT_FAILS(files.OpenText("/pos/a", OpenMode::Read), FailureKind::PermissionDenied);
    EXPECT_FAILS(files.DeleteFile("/pos/a"), FailureKind::PermissionDenied);
    EXPECT_FALSE(files.GetTimes("/pos/a"));
    EXPECT_FAILS(files.DeleteFolder("/pos"), FailureKind::PermissionDenied);
    files.Allow("/pos/a");
    files.DenyWrites("/pos");
    EXPECT_FAILS(files.OpenText("/pos/a", OpenMode::Append), FailureKind::PermissionDenied);
    EXPECT_FAILS(files.CreateFolder("/pos/b"), FailureKind::PermissionDenied);
    EXPECT_EQ(files.OpenText("/pos/a", OpenMode::Read)->ReadAll(), "1");
}

TEST_F(SimFilesTest, FindsByWildcardInTheOrderOfUpperCasedNames) {
    for (const char* strName : {"b.txt", "A.TXT", "c", "_x", "FLClient1.log", "old-flclient.log"}) {
        files.Put(std::string("/pos/") + strName, "");
    }
    files.Put("/pos/sub/d.txt", "");
    EXPECT_EQ(Found("C:\\pos\\*.*"),
              (std::vector<std::string>{"./", "../", "A.TXT", "b.txt", "c", "FLClient1.log",
                                        "old-flclient.log", "sub/", "_x"}));
    EXPECT_EQ(Found("/pos/*.txt"), (std::vector<std::string>{"A.TXT", "b.txt"}));
    EXPECT_EQ(Found("/pos/*flclient*"),
              (std::vector<std::string>{"FLClient1.log", "old-flclient.log"}));
    EXPECT_EQ(Found("/pos/?"), (std::vector<std::string>{"./", "c"}));
    EXPECT_EQ(Found("/pos/sub"), (std::vector<std::string>{"sub/"}));
    EXPECT_EQ(Found("/pos/a.txt"), (std::vector<std::string>{})); // exact names keep their case
    EXPECT_EQ(Found("/none/*"), (std::vector<std::string>{}));
    EXPECT_EQ(Found(""), (std::vector<std::string>{}));
    EXPECT_EQ(Found("/pos/"), (std::vector<std::string>{}));
}

TEST_F(SimFilesTest, FindFollowsLinks) {
    files.Put("/data/f", "");
    files.MakeLink("/pos/folder", "/data");
    files.MakeLink("/pos/lost", "nowhere");
    EXPECT_EQ(Found("/pos/*o*"), (std::vector<std::string>{"folder/", "lost"}));
    EXPECT_EQ(Found("/pos/folder/*f*"), (std::vector<std::string>{"f"}));
}

TEST_F(SimFilesTest, TimesAreThoseOfTheClock) {
    files.Put("/a", "");
    host.RunFor(10 * kSecond);
    files.AppendLine("/a", "x");
    const auto times = files.GetTimes("/a");
    ASSERT_TRUE(times);
    EXPECT_EQ(times->lCreated, 1794657600);
    EXPECT_EQ(times->lModified, 1794657610);
    files.SetTimes("/a", FileTimes{1, 2, 3});
    EXPECT_EQ(files.GetTimes("/a")->lAccessed, 2);
    EXPECT_EQ(files.Find("/a").at(0).times.lModified, 3);
    EXPECT_FALSE(files.GetTimes("/none"));
}

TEST_F(SimFilesTest, CreatesOneLevelOfFolders) {
    files.CreateFolder("C:\\pos\\");
    EXPECT_TRUE(files.FolderExists("/pos"));
    EXPECT_FAILS(files.CreateFolder("/pos"), FailureKind::FileAlreadyExists);
    EXPECT_FAILS(files.CreateFolder("/x/y"), FailureKind::PathNotFound);
    files.Put("/f", "");
    EXPECT_FAILS(files.CreateFolder("/f"), FailureKind::FileAlreadyExists);
    EXPECT_FALSE(files.FolderExists("/f"));
}

TEST_F(SimFilesTest, DeletesAFolderWithAllThatIsInIt) {
    files.Put("/pos/a/b", "1");
    files.Put("/pos/c", "2");
    files.Put("/posting", "3");
    files.Put("/data/kept", "4");
    files.MakeLink("/pos/link", "/data");
    files.DeleteFolder("C:\\pos");
    EXPECT_FALSE(files.Exists("/pos"));
    EXPECT_EQ(files.Get("/posting"), "3");
    EXPECT_EQ(files.Get("/data/kept"), "4"); // a link is never followed
}

TEST_F(SimFilesTest, RefusesToDeleteWhatMustStay) {
    files.SetDrives({{'C', "/"}, {'D', "/srv/data"}});
    files.MakeFolder("/srv/data/x");
    files.MakeFolder("/mnt/usb/x");
    files.AddMountPoint("/mnt/usb");
    files.MakeFolder("/real");
    files.MakeLink("/link", "/real");
    const std::vector<std::string> before = files.Tree();
    for (const char* strPath :
         {"/", "\\", "C:\\", "C:", "//", "/home", "/home/user", "/home/user/", "/opt",
          "/opt/brennik", "C:\\opt\\brennik", "D:\\", "/srv", "/srv/data", "/mnt", "/mnt/usb",
          "/link", "/srv/data/x/..", "/real/../home"}) {
        EXPECT_FAILS(files.DeleteFolder(strPath), FailureKind::PermissionDenied) << strPath;
    }
    for (const char* strPath : {"", "/none", "/ho*", "\\\\server\\x"}) {
        EXPECT_FAILS(files.DeleteFolder(strPath), FailureKind::PathNotFound) << strPath;
    }
    EXPECT_EQ(files.Tree(), before);
    files.DeleteFolder("/mnt/usb/x");
    EXPECT_FALSE(files.Exists("/mnt/usb/x"));
}

TEST_F(SimFilesTest, RefusesToDeleteATreeWithAReadOnlyEntryBeforeAnythingIsGone) {
    files.Put("/pos/a", "1");
    files.Put("/pos/b/c", "2");
    files.SetReadOnly("/pos/b/c", true);
    EXPECT_FAILS(files.DeleteFolder("/pos"), FailureKind::PermissionDenied);
    EXPECT_EQ(files.Tree("/pos"), (std::vector<std::string>{"a", "b/", "b/c"}));
    files.SetReadOnly("/pos/b/c", false);
    files.DeleteFolder("/pos");
    EXPECT_FALSE(files.Exists("/pos"));
}

TEST_F(SimFilesTest, TellsSizes) {
    files.Put("/pos/a", "123");
    files.Put("/pos/b/c", "4567");
    EXPECT_EQ(files.GetFileSize("/pos/a"), 3);
    EXPECT_EQ(files.GetFolderSize("/pos"), 7);
    EXPECT_FAILS(files.GetFileSize("/pos/none"), FailureKind::FileNotFound);
    EXPECT_FAILS(files.GetFileSize("/pos/b"), FailureKind::FileNotFound);
    EXPECT_FAILS(files.GetFolderSize("/none"), FailureKind::PathNotFound);
}

TEST_F(SimFilesTest, DeletesCopiesAndMovesFiles) {
    files.Put("/a", "1");
    files.Put("/b", "2");
    files.SetReadOnly("/b", true);
    EXPECT_FAILS(files.MoveFile("/a", "/b"), FailureKind::FileAlreadyExists);
    EXPECT_FAILS(files.CopyFile("/a", "/b"), FailureKind::PermissionDenied);
    files.DeleteFile("/b"); // read-only files too
    files.MoveFile("/a", "/b");
    EXPECT_FALSE(files.Exists("/a"));
    files.CopyFile("/b", "/c");
    files.Put("/d", "longer");
    files.CopyFile("/b", "/d");
    EXPECT_EQ(files.Get("/c"), "1");
    EXPECT_EQ(files.Get("/d"), "1");
    EXPECT_FAILS(files.DeleteFile("/none"), FailureKind::FileNotFound);
    EXPECT_FAILS(files.DeleteFile("/*"), FailureKind::FileNotFound);
    EXPECT_FAILS(files.DeleteFile("/home"), FailureKind::PermissionDenied);
    EXPECT_FAILS(files.MoveFile("/none", "/x"), FailureKind::FileNotFound);
    EXPECT_FAILS(files.MoveFile("/b", "/none/x"), FailureKind::PathNotFound);
}

TEST_F(SimFilesTest, CopiesFolders) {
    files.Put("/from/a", "1");
    files.Put("/from/b/c", "2");
    files.CopyFolder("/from", "/to", false);
    EXPECT_EQ(files.Tree("/to"), (std::vector<std::string>{"a", "b/", "b/c"}));
    files.Put("/from/a", "3");
    EXPECT_FAILS(files.CopyFolder("/from", "/to", false), FailureKind::FileAlreadyExists);
    files.CopyFolder("/from", "/to", true);
    EXPECT_EQ(files.Get("/to/a"), "3");
    EXPECT_FAILS(files.CopyFolder("/none", "/to", true), FailureKind::PathNotFound);
    EXPECT_FAILS(files.CopyFolder("/from", "/from/b", true), FailureKind::PermissionDenied);
}

TEST_F(SimFilesTest, TheReadOnlyAttributeIsTheWriteBits) {
    files.Put("/a", "1");
    files.SetAttributes("/a", 0x21);
    EXPECT_TRUE(files.IsReadOnly("/a"));
    files.SetAttributes("/a", 0x20);
    EXPECT_FALSE(files.IsReadOnly("/a"));
    EXPECT_FAILS(files.SetAttributes("/none", 0), FailureKind::FileNotFound);
}

TEST_F(SimFilesTest, TellsWhetherAPathStaysInside) {
    files.MakeFolder("/pos/sub");
    files.MakeFolder("/data");
    files.MakeLink("/pos/link", "/data");
    files.MakeLink("/alias", "/pos");
    for (const char* strInside : {"C:\\pos\\a", "C:\\pos\\sub\\a", "C:\\pos\\..a", "C:\\pos\\C:\\x",
                                  "/pos/new/a", "C:\\pos\\"}) {
        EXPECT_TRUE(files.StaysInside("C:\\pos\\", strInside)) << strInside;
    }
    for (const char* strOutside :
         {"C:\\pos\\..\\x", "C:\\pos\\sub\\..\\a", "C:\\posting", "C:\\pos", "/etc/x",
          "C:\\pos\\link", "C:\\pos\\link\\a", "", "\\\\pos\\a"}) {
        EXPECT_FALSE(files.StaysInside("C:\\pos\\", strOutside)) << strOutside;
    }
    EXPECT_FALSE(files.StaysInside("C:\\pos", std::string("C:\\pos\\a\0b", 10)));
    EXPECT_TRUE(files.StaysInside("/alias", "/alias/a")); // the base itself is the user's own
}

TEST_F(SimFilesTest, LinksAreFollowedAndNeverEndlessly) {
    files.Put("/data/f", "1");
    files.MakeLink("/abs", "/data");
    files.MakeLink("/pos/rel", "../data/f");
    files.MakeLink("/loop", "/loop");
    EXPECT_EQ(files.Get("/abs/f"), "1");
    EXPECT_EQ(files.Get("/pos/rel"), "1");
    EXPECT_FAILS(files.OpenText("/loop", OpenMode::Read), FailureKind::PathNotFound);
    files.DeleteFile("/pos/rel");
    EXPECT_EQ(files.Get("/data/f"), "1");
    EXPECT_EQ(files.Tree("/abs"), (std::vector<std::string>{"f"}));
}

TEST_F(SimFilesTest, EachCallCanFail) {
    files.Put("/a", "1");
    files.MakeFolder("/pos");
    const auto stream = files.OpenText("/a", OpenMode::Read);
    const auto out = files.OpenText("/b", OpenMode::Write);
    const auto failing = [&](Op op, const std::function<void()>& body) {
        host.FailNext(op);
        EXPECT_EQ(FailureOf(body), FailureKind::DeviceIoError) << NameOf(op);
        host.FailNext(op, {.kind = FailureKind::TooManyFiles});
        EXPECT_EQ(FailureOf(body), FailureKind::TooManyFiles) << NameOf(op);
    };
    failing(Op::OpenText, [&] { files.OpenText("/a", OpenMode::Read); });
    failing(Op::AppendLine, [&] { files.AppendLine("/a", "x"); });
    failing(Op::StreamRead, [&] { static_cast<void>(stream->ReadAll()); });
    failing(Op::StreamRead, [&] { static_cast<void>(stream->AtEndOfStream()); });
    failing(Op::StreamWrite, [&] { out->WriteLine("x"); });
    failing(Op::CreateFolder, [&] { files.CreateFolder("/c"); });
    failing(Op::DeleteFolder, [&] { files.DeleteFolder("/pos"); });
    failing(Op::GetFileSize, [&] { static_cast<void>(files.GetFileSize("/a")); });
    failing(Op::GetFolderSize, [&] { static_cast<void>(files.GetFolderSize("/pos")); });
    failing(Op::DeleteFile, [&] { files.DeleteFile("/a"); });
    failing(Op::CopyFile, [&] { files.CopyFile("/a", "/c"); });
    failing(Op::MoveFile, [&] { files.MoveFile("/a", "/c"); });
    failing(Op::CopyFolder, [&] { files.CopyFolder("/pos", "/c", true); });
    failing(Op::SetAttributes, [&] { files.SetAttributes("/a", 1); });
    host.FailNext(Op::StreamClose);
    EXPECT_EQ(FailureOf([&] { out->Close(); }), FailureKind::DeviceIoError);
    EXPECT_EQ(files.nOpenStreams(), 1); // closed all the same
    host.FailNext(Op::Find);
    EXPECT_TRUE(files.Find("/a").empty());
    host.FailNext(Op::GetTimes);
    EXPECT_FALSE(files.GetTimes("/a"));
    host.FailNext(Op::FolderExists);
    EXPECT_FALSE(files.FolderExists("/pos"));
    host.FailNext(Op::StaysInside);
    EXPECT_FALSE(files.StaysInside("/pos", "/pos/a"));
    EXPECT_EQ(files.Tree("/pos"), (std::vector<std::string>{})); // nothing of all that happened
    EXPECT_EQ(files.Get("/a"), "1");
    EXPECT_EQ(files.Get("/b"), "");
    EXPECT_FALSE(files.Exists("/c"));
}

} // namespace
} // namespace brennik::world
