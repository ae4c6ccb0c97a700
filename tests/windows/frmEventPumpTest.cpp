#include "shell/frmEventPump.h"

#include "platform/Host.h"
#include "platform/PumpEvents.h"
#include "shell/CommandLine.h"
#include "shell/WindowsEntry.h"
#include "shell/frmWindows.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEvent>
#include <functional>
#include <utility>
#include <vector>

namespace brennik {
namespace {

/// Counts how often the toolkit's events are handled.
class Ticks : public QObject {
  public:
    Ticks() { Post(); }
    int nCount = 0;
    std::function<void()> onTick;

  protected:
    bool event(QEvent* event) override {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        ++nCount;
        if (onTick)
            onTick();
        return true;
    }

  public:
    void Post() { QCoreApplication::postEvent(this, new QEvent(QEvent::User)); }
};

TEST(FrmEventPump, HandlesEventsAtMostEveryFiveMilliseconds) {
    int64_t lNow = 1000;
    frmEventPump pump([&] { return lNow; });
    Ticks ticks;
    const std::vector<std::pair<int64_t, int>> moments = {{1000, 1}, {1000, 1}, {1004, 1},
                                                          {1005, 2}, {1009, 2}, {1010, 3},
                                                          {1100, 4}, {1104, 4}, {1105, 5}};
    for (const auto& [lMoment, nExpected] : moments) {
        lNow = lMoment;
        const int nBefore = ticks.nCount;
        pump.Pump();
        EXPECT_EQ(ticks.nCount, nExpected) << lMoment;
        if (ticks.nCount > nBefore)
            ticks.Post();
    }
}

TEST(FrmEventPump, CountsFromTheEndOfWhatItHandled) {
    int64_t lNow = 0;
    frmEventPump pump([&] { return lNow; });
    Ticks ticks;
    ticks.onTick = [&] { lNow += 50; };
    pump.Pump();
    ticks.Post();
    lNow = 54;
    pump.Pump();
    EXPECT_EQ(ticks.nCount, 1);
    lNow = 55;
    pump.Pump();
    EXPECT_EQ(ticks.nCount, 2);
}

TEST(FrmEventPump, DoesNothingInsideItself) {
    int64_t lNow = 0;
    frmEventPump pump([&] { return lNow += 100; });
    Ticks ticks;
    ticks.onTick = [&] {
        if (ticks.nCount > 1)
            return;
        ticks.Post();
        pump.Pump();
        EXPECT_EQ(ticks.nCount, 1) << "nothing is handled nested";
    };
    pump.Pump();
    while (ticks.nCount < 2)
        pump.Pump();
    SUCCEED();
}

TEST(FrmWindows, PutTheirEventsBehindThePumpingOfTheRealHost) {
    RealHost().pumpEvents = [] {};
    Ticks ticks;
    PumpEvents();
    EXPECT_EQ(ticks.nCount, 0);
    PumpWindowEvents();
    PumpEvents();
    EXPECT_EQ(ticks.nCount, 1);
    RealHost().pumpEvents = [] {};
}

TEST(FrmWindows, RefuseAProgramOfAnotherVersionAndDoNothing) {
    char strName[] = "brennikclient";
    char* arguments[] = {strName, nullptr};
    for (const int32_t lVersion : {kWindowsVersion - 1, kWindowsVersion + 1, 0})
        EXPECT_EQ(OpenWindows(lVersion, 1, arguments), kWindowsForeign);
}

} // namespace
} // namespace brennik
