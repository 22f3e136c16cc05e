// Parsers, caches and serializers of different threads share nothing that changes. ThreadSanitizer
// runs these tests at every landing; elsewhere they check the results alone.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <latch>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/ExactBuffer.h"
#include "tests/support/UsingCodePage.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/json/JsonMessageSerializer.h"
#include "tvk/platform/CodePage.h"
#include "tvk/values/KestrinMessage.h"
#include "tvk/values/MappedMessage.h"

namespace {

using ::testing::Each;
using tvk::ErrorInfo;
using tvk::FieldValue;
using tvk::JsonMessageParser;
using tvk::JsonMessageSerializer;
using tvk::KestrinMessage;
using tvk::MappedMessage;
using tvk::RefCountedPtr;
using tvk::SimpleObjectCache;
using tvk::test::ExactBuffer;
using tvk::test::UsingCodePage;

constexpr unsigned int THREADS = 8;
constexpr unsigned int MESSAGES = 400;

/// Messages of a few kinds: mostly the same names and values as before, and some that come once.
class Feed {
public:
    explicit Feed(unsigned int seed) : random_(seed) {}

    std::string next() {
        std::string const head = R"("sym":")" + std::to_string(4000 + below(40)) + R"(","seq":)" +
                                 std::to_string(100000 + below(100000)) +
                                 R"(,"time":"2014/01/02 09:00:)" + std::to_string(below(60)) + '"';
        switch (below(4)) {
            case 0:
                return "{" + head + R"(,"name":"\u65e5本","open":true,"note":null})";
            case 1:
                return "{" + head + R"(,"asks":[{"p":14855,"v":)" + std::to_string(below(9)) +
                       R"(},{"p":-1.5e3,"v":2}],"text":"a\"b\\c\n"})";
            case 2:
                return "{" + head + R"(,"only)" + std::to_string(below(500)) +
                       R"(":{"in":[[],{},[false]]}})";
            default:
                return R"({"last":)" + std::to_string(below(1000)) + "." +
                       std::to_string(below(100)) + "," + head + "}";
        }
    }

private:
    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(random_() % limit); }

    std::mt19937 random_;
};

/// What one thread owns.
struct Codec {
    RefCountedPtr<KestrinMessage> parse(std::string const & text) {
        ExactBuffer const data(text);
        ErrorInfo error;
        RefCountedPtr<KestrinMessage> result =
            parser.parseJsonMessage(data.data(), data.length(), 0, &error);
        EXPECT_STREQ(error.getErrorMessage(), "");
        return result;
    }
    std::string write(KestrinMessage const & message) {
        unsigned int const size = serializer.recordDataToJson(nullptr, 0, message, 0);
        return std::string(static_cast<char const *>(serializer.getResultsBuffer()), size);
    }

    SimpleObjectCache cache{SimpleObjectCache::defaultRawDataConverter()};
    JsonMessageParser parser{&cache};
    JsonMessageSerializer serializer;
};

/// The texts of all messages of a feed, read and written again, a few of them alive together.
std::vector<std::string> rewritten(unsigned int seed) {
    constexpr std::size_t ALIVE = 16;
    Codec codec;
    Feed feed(seed);
    std::vector<RefCountedPtr<KestrinMessage>> alive(ALIVE);
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < MESSAGES; ++i) {
        RefCountedPtr<KestrinMessage> & message = alive[i % ALIVE];
        message = codec.parse(feed.next());
        message->setFieldValue("again", message->getFieldValue("sym"));
        texts.push_back(codec.write(*message));
    }
    return texts;
}

/// Runs a job of each number below THREADS on a thread of its own, all of them at the same time.
template <class Job>
void onAllThreads(Job const & job) {
    std::latch start(THREADS);
    std::vector<std::thread> threads;
    for (unsigned int number = 0; number < THREADS; ++number) {
        threads.emplace_back([&start, &job, number] {
            start.arrive_and_wait();
            job(number);
        });
    }
    for (std::thread & thread : threads) {
        thread.join();
    }
}

class ParallelParsers : public ::testing::Test {
protected:
    UsingCodePage codePage{932};
};

TEST_F(ParallelParsers, GiveTheResultsOfOneAloneOnTheSameFeed) {
    std::vector<std::vector<std::string>> results(THREADS);
    onAllThreads([&](unsigned int number) { results[number] = rewritten(1); });
    EXPECT_THAT(results, Each(rewritten(1)));
}

TEST_F(ParallelParsers, GiveTheResultsOfOneAloneOnFeedsOfTheirOwn) {
    std::vector<std::vector<std::string>> results(THREADS);
    onAllThreads([&](unsigned int number) { results[number] = rewritten(number); });
    for (unsigned int number = 0; number < THREADS; ++number) {
        EXPECT_EQ(results[number], rewritten(number)) << "feed " << number;
    }
}

TEST_F(ParallelParsers, LeaveMessagesThatAnotherThreadMayTakeOver) {
    std::vector<RefCountedPtr<KestrinMessage>> messages(THREADS);
    std::vector<std::string> texts(THREADS);
    onAllThreads([&](unsigned int number) {
        Codec codec;
        messages[number] = codec.parse(Feed(number).next());
        texts[number] = codec.write(*messages[number]);
    });
    Codec codec;
    for (unsigned int number = 0; number < THREADS; ++number) {
        EXPECT_EQ(codec.write(*messages[number]), texts[number]) << "thread " << number;
        messages[number] = nullptr;
    }
}

TEST_F(ParallelParsers, ReadNumbersThatNobodyChanges) {
    Codec owner;
    RefCountedPtr<KestrinMessage> const message = owner.parse(R"({"price":172.25,"seq":100003})");
    FieldValue const * const price = message->getFieldValue("price").get();
    FieldValue const * const sequence = message->getFieldValue("seq").get();
    std::vector<double> prices(THREADS);
    std::vector<long long> sequences(THREADS);
    onAllThreads([&](unsigned int number) {
        prices[number] = price->doubleValue();
        sequences[number] = sequence->longlongValue();
    });
    EXPECT_THAT(prices, Each(172.25));
    EXPECT_THAT(sequences, Each(100003));
}

}  // namespace
