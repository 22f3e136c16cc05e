// A program of its own, with one test: nothing brings the container back.

#include <gtest/gtest.h>

#include "tests/support/AtEnd.h"
#include "tests/support/ChartDoubles.h"
#include "tests/support/ErrorManagerDouble.h"
#include "tests/support/NewsDoubles.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/RecordingThreadPool.h"
#include "tvk/agent/KestrinContainer.h"

namespace tvk {
namespace {

/// The members that a look into the container finds, by their initials.
std::string membersFound() {
    KestrinContainer const * const container = KestrinContainer::instance();
    if (container == nullptr) {
        return "no container";
    }
    std::string members;
    members += container->getKestrin() != nullptr ? "A" : "-";
    members += container->getErrorManager() != nullptr ? "E" : "-";
    members += container->getThreadPool() != nullptr ? "T" : "-";
    members += container->getXmlNewsService() != nullptr ? "N" : "-";
    members += container->getChartService() != nullptr ? "C" : "-";
    return members;
}

TEST(KestrinContainerCleanup, ReleasesTheCountedMembersInTheirOrderAndLeavesThePoolAlone) {
    test::Log log;
    test::RecordingThreadPool pool(log);
    auto const saying = [&log](char const * name) {
        return [&log, name] { log.push_back(name + (" finds " + membersFound())); };
    };
    KestrinContainer & container = *KestrinContainer::instance();
    container.setChartService(new test::AtEnd<test::RecordingChartService>(saying("chart"), log));
    container.setXmlNewsService(new test::AtEnd<test::RecordingNewsService>(saying("news"), log));
    container.setErrorManager(new test::ErrorManagerDouble(saying("errors")));
    container.setKestrin(new test::AtEnd<test::RecordingAgent>(saying("agent"), log));
    container.setThreadPool(&pool);
    EXPECT_EQ(membersFound(), "AETNC");
    EXPECT_EQ(log, test::Log{});

    KestrinContainer::cleanup();
    EXPECT_EQ(log, (test::Log{"agent finds AETNC", "errors finds -ETNC", "news finds --TNC",
                              "chart finds --T-C"}));
    EXPECT_EQ(KestrinContainer::instance(), nullptr);

    KestrinContainer::cleanup();
    EXPECT_EQ(KestrinContainer::instance(), nullptr);
    EXPECT_EQ(log.size(), 4u);
}

}  // namespace
}  // namespace tvk
