#include "platform/SerialTerminal.h"

#include "tests/system/PseudoTerminal.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>

namespace brennik {
namespace {

using namespace system_tests;

TEST(SerialTerminal, KnowsPseudoTerminals) {
    const PseudoTerminal terminal;
    const Descriptor line = OpenSerialTerminal(terminal.strPath());
    ASSERT_TRUE(line.IsOpen());
    EXPECT_TRUE(IsPseudoTerminal(line.Get()));
    EXPECT_FALSE(IsPseudoTerminal(OpenDescriptor("/dev/null", O_RDWR).Get()));
    EXPECT_FALSE(IsPseudoTerminal(OpenDescriptor("/dev/ptmx", O_RDWR).Get()));
    EXPECT_FALSE(IsPseudoTerminal(OpenDescriptor("/", O_RDONLY).Get()));
    EXPECT_FALSE(IsPseudoTerminal(-1));
}

TEST(SerialTerminal, AFrameThatARealLineDoesNotTakeIsTakenBack) {
    const PseudoTerminal terminal;
    const Descriptor line = OpenSerialTerminal(terminal.strPath());
    ASSERT_TRUE(line.IsOpen());
    LineSettings settings = *LineSettingsOf(DCB{});
    ASSERT_TRUE(SetSerialTerminal(line.Get(), settings, false));
    const SeenSettings before = terminal.Settings();
    DCB dcb;
    dcb.BaudRate = 300;
    dcb.Parity = 2;
    settings = *LineSettingsOf(dcb);
    errno = 0;
    EXPECT_FALSE(SetSerialTerminal(line.Get(), settings, false));
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(terminal.Settings(), before);
    EXPECT_TRUE(SetSerialTerminal(line.Get(), settings, true));
    EXPECT_EQ(terminal.Settings().lBaudRate, 300U);
}

TEST(SerialTerminal, APseudoTerminalHoldsNothing) {
    PseudoTerminal terminal;
    const Descriptor line = OpenSerialTerminal(terminal.strPath());
    ASSERT_TRUE(line.IsOpen());
    ASSERT_TRUE(WriteAll(line.Get(), "sent"));
    EXPECT_EQ(BytesLeaving(line.Get()), 0);
    DiscardOutput(line.Get());
    EXPECT_EQ(terminal.Receive(4), "sent") << "what was sent isn't taken back";
    terminal.HangUp();
    EXPECT_EQ(BytesLeaving(line.Get()), -1);
}

} // namespace
} // namespace brennik
