#include "dialogs/WindowText.h"

#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

std::string Line(const std::string& strBytes) {
    return LineText(strBytes).toStdString();
}

std::string Message(const std::string& strBytes) {
    return MessageText(strBytes).toStdString();
}

TEST(WindowText, ShowsUtf8AsItIs) {
    EXPECT_EQ(Line(""), "");
    EXPECT_EQ(Line("readme.txt"), "readme.txt");
    EXPECT_EQ(Line("Gr\xC3\xB6\xC3\x9F"
                   "e \xE2\x82\xAC \xF0\x9F\x92\xB3"),
              "Gr\xC3\xB6\xC3\x9F"
              "e \xE2\x82\xAC \xF0\x9F\x92\xB3");
}

TEST(WindowText, MarksBytesThatAreNoUtf8AndKeepsTheRest) {
    EXPECT_EQ(Line("a\xFF"
                   "b"),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(Line("caf\xE9"), "caf\xEF\xBF\xBD");
}

TEST(WindowText, KeepsOneLineOneLine) {
    EXPECT_EQ(Line("a\r\nb\tc"), "a\xE2\x90\x8D\xE2\x90\x8A"
                                 "b\xE2\x90\x89"
                                 "c");
    EXPECT_EQ(Line(std::string("a\0b\x7F", 4)), "a\xE2\x90\x80"
                                                "b\xE2\x90\xA1");
    EXPECT_EQ(Line("a\xE2\x80\xA8"
                   "b\xE2\x80\xA9"
                   "c\xC2\x85"),
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD"
              "c\xEF\xBF\xBD");
}

TEST(WindowText, LetsNoMarkTurnTheDirection) {
    EXPECT_EQ(Line("exe\xE2\x80\xAE"
                   "txt."),
              "exe\xEF\xBF\xBD"
              "txt.");
    EXPECT_EQ(Line("\xE2\x81\xA6\xE2\x80\x8F\xD8\x9C"), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(WindowText, KeepsTheLineEndsOfAMessage) {
    EXPECT_EQ(Message("one\r\ntwo\nthree"), "one\ntwo\nthree");
    EXPECT_EQ(Message("one\r\n\r\ntwo\r\n"), "one\n\ntwo\n");
    EXPECT_EQ(Message("one\rtwo"), "one\xE2\x90\x8D"
                                   "two");
    EXPECT_EQ(Message("end\r"), "end\xE2\x90\x8D");
    EXPECT_EQ(Message(""), "");
}

TEST(WindowText, GivesTheFirstLineOfWhatWasPasted) {
    EXPECT_EQ(BytesOf(QStringLiteral("one\ntwo")), "one");
    EXPECT_EQ(BytesOf(QStringLiteral("one\r\n")), "one");
    EXPECT_EQ(BytesOf(QString(QChar(u'\0')) + QStringLiteral("x")), "");
}

TEST(WindowText, GivesWhatWasTypedAsUtf8) {
    EXPECT_EQ(BytesOf(QStringLiteral("Gr\u00F6\u00DFe")), "Gr\xC3\xB6\xC3\x9F"
                                                          "e");
}

} // namespace
} // namespace brennik
