#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "examples/inprocess_agent/TableBackEnd.h"

namespace tvk::test {

using inprocess::Answer;
using inprocess::AnswerTable;
using inprocess::TableBackEnd;
using inprocess::Timeline;

namespace {

AnswerTable table() {
    AnswerTable table;
    table.answers = {
        {"quick", {5, R"({"n":1})"}},
        {"fails", {5, R"({"code":16})", Answer::FAILURE}},
        {"never", {5, "{}", Answer::SILENCE}},
    };
    table.pushes = {
        {"quote", "A", 10, R"({"n":1})"},
        {"quote", "A", 20, R"({"n":2})"},
        {"quote", "B", 15, R"({"n":3})"},
    };
    return table;
}

class InProcessBackEnd : public testing::Test {
protected:
    using Frames = std::vector<std::string>;

    void topic(std::string const & messageTypeId, std::string const & subject) {
        backEnd_.take("{\"kind\":1,\"type\":\"" + messageTypeId + "\"}\n" +
                      R"({"type":"quote","subject":")" + subject + "\"}");
    }

    /// What came in that time, each with the time in front.
    Frames after(int milliSeconds) {
        frames_.clear();
        timeline_.advance(milliSeconds);
        return frames_;
    }

    static std::string notice(std::string const & time, std::string const & subject,
                              std::string const & body) {
        return time + R"( {"fields":{"subject":")" + subject +
               "\"},\"kind\":3,\"type\":\"quote\"}\n" + body;
    }

    Timeline timeline_;
    Frames frames_;
    TableBackEnd backEnd_{table(), timeline_, [this](std::string const & frame) {
                              frames_.push_back(std::to_string(timeline_.now()) + " " + frame);
                          }};
};

}  // namespace

TEST_F(InProcessBackEnd, AnswersByItsTable) {
    backEnd_.take("{\"id\":\"1\",\"kind\":1,\"type\":\"quick\"}\n{}");
    backEnd_.take("{\"id\":\"2\",\"kind\":1,\"type\":\"fails\"}\n{}");
    backEnd_.take("{\"id\":\"3\",\"kind\":1,\"type\":\"never\"}\n{}");
    backEnd_.take("{\"id\":\"4\",\"kind\":1,\"type\":\"other\"}\n{}");
    EXPECT_EQ(frames_, Frames());
    EXPECT_EQ(
        after(100),
        (Frames{"0 {\"fields\":{\"failed\":true},\"id\":\"4\",\"kind\":2,\"type\":\"other\"}\n"
                "{\"code\":6,\"text\":\"unknown message\"}",
                "5 {\"id\":\"1\",\"kind\":2,\"type\":\"quick\"}\n{\"n\":1}",
                "5 {\"fields\":{\"failed\":true},\"id\":\"2\",\"kind\":2,\"type\":\"fails\"}\n"
                "{\"code\":16}"}));
}

TEST_F(InProcessBackEnd, AnswersNothingWithoutAnIdentifier) {
    backEnd_.take("{\"kind\":1,\"type\":\"quick\"}\n{}");
    EXPECT_EQ(after(100), Frames());
}

TEST_F(InProcessBackEnd, DropsWhatItCannotRead) {
    backEnd_.take("");
    backEnd_.take("{\"id\":\"1\",\"kind\":1,\"type\":\"quick\"}\n{");
    EXPECT_EQ(after(100), Frames());
}

TEST_F(InProcessBackEnd, PushesWhatIsSubscribed) {
    topic("subscribe", "A");
    topic("subscribe", "C");
    EXPECT_EQ(after(15), Frames{notice("10", "A", "{\"n\":1}")});
    topic("unsubscribe", "A");
    topic("unsubscribe", "B");
    EXPECT_EQ(after(100), Frames());
}

TEST_F(InProcessBackEnd, BeginsAnewWithEachSubscription) {
    topic("subscribe", "A");
    after(15);
    topic("unsubscribe", "A");
    topic("subscribe", "A");
    EXPECT_EQ(after(100), (Frames{notice("25", "A", "{\"n\":1}"), notice("35", "A", "{\"n\":2}")}));
}

TEST_F(InProcessBackEnd, ClosesAllWithTheSession) {
    for (char const * const end : {"login", "logout"}) {
        SCOPED_TRACE(end);
        topic("subscribe", "A");
        topic("subscribe", "B");
        topic(end, "");
        EXPECT_EQ(after(100), Frames());
    }
}

}  // namespace tvk::test
