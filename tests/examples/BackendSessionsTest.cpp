#include "examples/backend/Sessions.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace tvk::test {

using namespace backend;

namespace {

constexpr std::size_t RING = 5;
constexpr long long GRACE = 100;

NoticeFrame frameOf(std::string const & text) { return std::make_shared<std::string const>(text); }

/// All that the session would send now, as "number text".
std::vector<std::string> taken(Session & session) {
    std::vector<std::string> lines;
    while (session.hasUnsent()) {
        auto const [number, frame] = session.takeUnsent();
        lines.push_back(std::to_string(number) + " " + *frame);
    }
    return lines;
}

using Lines = std::vector<std::string>;

class BackendSessions : public testing::Test {
protected:
    /// A session that gets everything.
    Session * openFor(std::string const & loginId) {
        Session * const session = sessions_.open(loginId);
        bool isNew = false;
        session->subscribe({"*", "*"}, &isNew);
        session->setRealTime(true);
        return session;
    }

    std::size_t publish(std::string const & text, std::string const & owner = "") {
        return sessions_.publish("quote", "7203", owner, [&text] { return frameOf(text); });
    }

    Sessions sessions_{{RING, GRACE, 4}};
};

}  // namespace

TEST(BackendSession, WantsWhatItSubscribed) {
    struct Row {
        Topic topic;
        bool exact;
        bool otherSubject;
        bool otherType;
    };
    std::vector<Row> const rows = {
        {{"quote", "7203"}, true, false, false}, {{"quote", "*"}, true, true, false},
        {{"*", "7203"}, true, false, true},      {{"*", "*"}, true, true, true},
        {{"quote", ""}, false, false, false},    {{"order", "7203"}, false, false, true},
    };
    for (Row const & row : rows) {
        SCOPED_TRACE(row.topic.first + " " + row.topic.second);
        Session session("token", "taro", RING);
        bool isNew = false;
        EXPECT_TRUE(session.subscribe(row.topic, &isNew));
        EXPECT_TRUE(isNew);
        EXPECT_FALSE(session.wants("quote", "7203")) << "without the service nothing comes";
        session.setRealTime(true);
        EXPECT_EQ(session.wants("quote", "7203"), row.exact);
        EXPECT_EQ(session.wants("quote", "1201"), row.otherSubject);
        EXPECT_EQ(session.wants("order", "7203"), row.otherType);
        EXPECT_TRUE(session.subscribe(row.topic, &isNew));
        EXPECT_FALSE(isNew);
        session.unsubscribe(row.topic);
        session.unsubscribe(row.topic);
        EXPECT_FALSE(session.wants("quote", "7203"));
    }
}

TEST(BackendSession, BoundsItsTopics) {
    Session session("token", "taro", RING);
    bool isNew = false;
    for (std::size_t topic = 0; topic < Session::MAXIMUM_TOPICS; ++topic) {
        ASSERT_TRUE(session.subscribe({"quote", std::to_string(topic)}, &isNew));
    }
    EXPECT_FALSE(session.subscribe({"quote", "one more"}, &isNew));
    EXPECT_TRUE(session.subscribe({"quote", "1"}, &isNew)) << "it is there already";
    session.unsubscribe({"quote", "1"});
    EXPECT_TRUE(session.subscribe({"quote", "one more"}, &isNew));
}

TEST(BackendSession, NumbersItsNoticesFromOne) {
    Session session("token", "taro", RING);
    EXPECT_EQ(session.lastSequence(), 0U);
    EXPECT_FALSE(session.hasUnsent());
    session.add(frameOf("a"));
    session.add(frameOf("b"));
    EXPECT_EQ(session.unsentCount(), 2U);
    EXPECT_EQ(session.unsentBytes(), 2U);
    EXPECT_EQ(taken(session), (Lines{"1 a", "2 b"}));
    EXPECT_EQ(session.sentSequence(), 2U);
    EXPECT_EQ(session.unsentBytes(), 0U);
}

TEST(BackendSession, KnowsWhatItHasLost) {
    Session session("token", "taro", RING);
    for (std::size_t notice = 0; notice < RING; ++notice) {
        session.add(frameOf("x"));
    }
    EXPECT_FALSE(session.hasLost());
    session.add(frameOf("x"));
    EXPECT_TRUE(session.hasLost());
    EXPECT_EQ(session.unsentBytes(), RING);
}

TEST(BackendSession, ResumesWhereTheRingReaches) {
    Session session("token", "taro", RING);
    for (int notice = 1; notice <= 8; ++notice) {
        session.add(frameOf(std::string(1, static_cast<char>('a' + notice))));
        taken(session);
    }
    EXPECT_FALSE(session.resumeBehind(2)) << "3 is gone";
    EXPECT_FALSE(session.resumeBehind(9)) << "9 was never given";
    EXPECT_TRUE(session.resumeBehind(6));
    EXPECT_EQ(session.unsentBytes(), 0U) << "what was there already does not count against it";
    EXPECT_EQ(taken(session), (Lines{"7 h", "8 i"}));
    EXPECT_TRUE(session.resumeBehind(3));
    EXPECT_EQ(taken(session).size(), RING);
    EXPECT_TRUE(session.resumeBehind(8));
    EXPECT_FALSE(session.hasUnsent());
}

TEST_F(BackendSessions, PublishToWhomItConcerns) {
    Session * const taro = openFor("taro");
    Session * const jiro = openFor("jiro");
    Session * const deaf = sessions_.open("saburo");
    EXPECT_EQ(publish("all"), 2U);
    EXPECT_EQ(publish("own", "jiro"), 1U);
    EXPECT_EQ(publish("none", "shiro"), 0U);
    EXPECT_EQ(taken(*taro), Lines{"1 all"});
    EXPECT_EQ(taken(*jiro), (Lines{"1 all", "2 own"}));
    EXPECT_EQ(taken(*deaf), Lines());
    EXPECT_TRUE(sessions_.anyWants("quote", "7203"));
    sessions_.close(*taro);
    sessions_.close(*jiro);
    EXPECT_FALSE(sessions_.anyWants("quote", "7203"));
}

TEST_F(BackendSessions, MakeAFrameOnceAndOnlyWhenItIsWanted) {
    int made = 0;
    auto const make = [&made] {
        ++made;
        return frameOf("x");
    };
    EXPECT_EQ(sessions_.publish("quote", "7203", "", make), 0U);
    EXPECT_EQ(made, 0);
    openFor("taro");
    openFor("jiro");
    EXPECT_EQ(sessions_.publish("quote", "7203", "", make), 2U);
    EXPECT_EQ(made, 1);
}

TEST_F(BackendSessions, HaveTokensThatDiffer) {
    std::string const one = sessions_.open("taro")->token();
    std::string const other = sessions_.open("taro")->token();
    EXPECT_EQ(one.size(), 32U);
    EXPECT_NE(one, other);
}

TEST_F(BackendSessions, ResumeForTheUserWithTheToken) {
    Session * const session = openFor("taro");
    std::string const token = session->token();
    publish("a");
    sessions_.letGo(*session, 0);
    EXPECT_EQ(publish("b"), 1U) << "it goes on collecting";
    EXPECT_EQ(sessions_.resume(token, "jiro", 0), nullptr);
    EXPECT_EQ(sessions_.resume("", "taro", 0), nullptr);
    EXPECT_EQ(sessions_.resume(token, "taro", 3), nullptr);
    EXPECT_EQ(sessions_.resume(token, "taro", 1), session);
    EXPECT_EQ(taken(*session), Lines{"2 b"});
    EXPECT_EQ(sessions_.resume(token, "taro", 2), session) << "it changes hands";
}

TEST_F(BackendSessions, EndWhenTheGraceTimeIsOver) {
    Session * const held = openFor("taro");
    Session * const left = openFor("jiro");
    std::string const token = left->token();
    sessions_.letGo(*left, 1'000);
    sessions_.closeOverdue(1'000 + GRACE - 1);
    EXPECT_EQ(sessions_.resume(token, "jiro", 0), left);
    sessions_.closeOverdue(9'000);
    EXPECT_EQ(sessions_.count(), 2U);
    sessions_.letGo(*left, 9'000);
    sessions_.closeOverdue(9'000 + GRACE);
    EXPECT_EQ(sessions_.count(), 1U);
    EXPECT_EQ(sessions_.resume(token, "jiro", 0), nullptr);
    EXPECT_EQ(sessions_.resume(held->token(), "taro", 0), held);
}

TEST_F(BackendSessions, CannotBeResumedWhenForgotten) {
    Session * const session = openFor("taro");
    std::string const token = session->token();
    sessions_.forget(*session);
    EXPECT_EQ(publish("a"), 1U) << "it goes on as it is";
    EXPECT_EQ(sessions_.resume(token, "taro", 0), nullptr);
    sessions_.letGo(*session, 0);
    EXPECT_EQ(sessions_.count(), 0U);
}

TEST_F(BackendSessions, AreBounded) {
    for (int session = 0; session < 4; ++session) {
        EXPECT_NE(sessions_.open("taro"), nullptr);
    }
    EXPECT_EQ(sessions_.open("taro"), nullptr);
}

namespace {

/// What a client and its session ought to know, kept without a ring.
struct Model {
    std::vector<std::string> all;  // notices, the first is number 1
    std::size_t sent = 0;
    bool isHeld = true;
    long long letGoAt = 0;
};

}  // namespace

TEST(BackendSessionsAtRandom, GiveEachNoticeOnceAndInOrder) {
    std::mt19937 random(3);
    for (int round = 0; round < 300; ++round) {
        Sessions sessions({RING, GRACE, 1});
        Session * session = sessions.open("taro");
        std::string const token = session->token();
        bool isNew = false;
        session->subscribe({"quote", "*"}, &isNew);
        session->setRealTime(true);
        Model model;
        long long now = 0;
        bool isAlive = true;
        for (int step = 0; step < 200 && isAlive; ++step) {
            now += random() % 10;
            switch (random() % 6) {
                case 0:
                case 1: {
                    std::string const text = std::to_string(step);
                    sessions.publish("quote", "7203", "", [&text] { return frameOf(text); });
                    model.all.push_back(text);
                    break;
                }
                case 2:
                    if (model.isHeld && session->hasUnsent() && !session->hasLost()) {
                        auto const [number, frame] = session->takeUnsent();
                        ++model.sent;
                        ASSERT_EQ(number, model.sent);
                        ASSERT_EQ(*frame, model.all[model.sent - 1]);
                    }
                    break;
                case 3:
                    if (model.isHeld) {
                        sessions.letGo(*session, now);
                        model.isHeld = false;
                        model.letGoAt = now;
                    }
                    break;
                case 4: {
                    std::size_t const last = random() % (model.all.size() + 2);
                    std::size_t const kept = model.all.size() > RING ? model.all.size() - RING : 0;
                    bool const reaches = last >= kept && last <= model.all.size();
                    Session * const resumed = sessions.resume(token, "taro", last);
                    ASSERT_EQ(resumed, reaches ? session : nullptr);
                    if (reaches) {
                        model.sent = last;
                        model.isHeld = true;
                    }
                    break;
                }
                default:
                    sessions.closeOverdue(now);
                    isAlive = model.isHeld || now - model.letGoAt < GRACE;
                    ASSERT_EQ(sessions.count(), isAlive ? 1U : 0U);
                    break;
            }
            if (isAlive) {
                ASSERT_EQ(session->lastSequence(), model.all.size());
                ASSERT_EQ(session->sentSequence(), model.sent);
                ASSERT_EQ(session->unsentCount(), model.all.size() - model.sent);
                ASSERT_EQ(session->hasLost(), model.all.size() > model.sent + RING);
            }
        }
    }
}

}  // namespace tvk::test
