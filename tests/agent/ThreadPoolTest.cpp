#include "tvk/agent/ThreadPool.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "tests/support/RecordingThreadPool.h"
#include "tests/support/VirtualOrder.h"

namespace tvk {
namespace {

using test::callText;
using test::slotOf;

static_assert(std::is_abstract_v<ThreadPool>);
static_assert(std::has_virtual_destructor_v<ThreadPool>);
static_assert(std::is_destructible_v<ThreadPool>);
static_assert(std::is_copy_assignable_v<ThreadPool>);
static_assert(sizeof(ThreadPool) == sizeof(void *));
static_assert(std::is_abstract_v<ThreadPool::Task>);
static_assert(std::has_virtual_destructor_v<ThreadPool::Task>);
static_assert(std::is_destructible_v<ThreadPool::Task>);
static_assert(std::is_copy_assignable_v<ThreadPool::Task>);
static_assert(sizeof(ThreadPool::Task) == sizeof(void *));

template <class Class>
class OneMore : public Class {
public:
    virtual void oneMore() {}
};

TEST(ThreadPool, KeepsItsVirtualOrder) {
    test::expectVirtualOrder(2, {{"execute", slotOf(&ThreadPool::execute)},
                                 {"executeAfter", slotOf(&ThreadPool::executeAfter)},
                                 {"cancel", slotOf(&ThreadPool::cancel)},
                                 {"getThreadCount", slotOf(&ThreadPool::getThreadCount)},
                                 {"getPendingCount", slotOf(&ThreadPool::getPendingCount)},
                                 {"shutdown", slotOf(&ThreadPool::shutdown)},
                                 {"the end", slotOf(&OneMore<ThreadPool>::oneMore)}});
}

TEST(ThreadPool, KeepsTheVirtualOrderOfATask) {
    test::expectVirtualOrder(2, {{"run", slotOf(&ThreadPool::Task::run)},
                                 {"the end", slotOf(&OneMore<ThreadPool::Task>::oneMore)}});
}

class CountedTask : public ThreadPool::Task {
public:
    explicit CountedTask(test::Log * log) : log_(log) {}
    ~CountedTask() override { log_->push_back("the end of the task"); }
    void run() override { log_->push_back("run"); }

private:
    test::Log * log_;
};

TEST(ThreadPool, ReachesItsImplementation) {
    test::Log log;
    auto made = std::make_unique<test::RecordingThreadPool>(log);
    made->threadCount = 4;
    made->pendingCount = 7;
    std::unique_ptr<ThreadPool::Task> task = std::make_unique<CountedTask>(&log);
    ThreadPool::Task * const known = task.get();
    ThreadPool & pool = *made;
    EXPECT_TRUE(pool.execute(known));
    EXPECT_TRUE(pool.executeAfter(known, 250));
    made->yes = false;
    EXPECT_FALSE(pool.cancel(known));
    EXPECT_EQ(pool.getThreadCount(), 4u);
    EXPECT_EQ(pool.getPendingCount(), 7u);
    pool.shutdown();
    task->run();
    task.reset();
    std::unique_ptr<ThreadPool>(std::move(made)).reset();
    EXPECT_EQ(log, (test::Log{callText("execute", known), callText("executeAfter", known, 250),
                              callText("cancel", known), callText("getThreadCount"),
                              callText("getPendingCount"), callText("shutdown"), "run",
                              "the end of the task", callText("~ThreadPool")}));
}

TEST(ThreadPool, CopyingAndAssigningMoveNothing) {
    test::Log log;
    test::Log otherLog;
    {
        test::RecordingThreadPool pool(log);
        test::RecordingThreadPool const other(otherLog);
        static_cast<ThreadPool &>(pool) = other;
        pool.shutdown();
        CountedTask task(&log);
        CountedTask const copy(task);
        static_cast<ThreadPool::Task &>(task) = copy;
        task.run();
    }
    EXPECT_EQ(log, (test::Log{callText("shutdown"), "run", "the end of the task",
                              "the end of the task", callText("~ThreadPool")}));
    EXPECT_EQ(otherLog, (test::Log{callText("~ThreadPool")}));
}

}  // namespace
}  // namespace tvk
