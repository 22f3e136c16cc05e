#include "tvk/values/detail/DeferredRelease.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/AllocationFailure.h"
#include "tests/support/DeepValues.h"
#include "tests/support/Recorded.h"
#include "tests/support/SmallStack.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"

namespace tvk {
namespace {

using test::Log;
using test::Recorded;
using Value = RefCountedPtr<FieldValue>;

// ---- The order of the ends -------------------------------------------------------------------

/// A tree of values as plain data, and what its release does when it recurses.
struct Node {
    enum Kind { LEAF, LIST, RECORD, MESSAGE };

    Kind kind = LEAF;
    std::string name;
    std::vector<int> parts;        // elements, body fields
    std::vector<int> headerParts;  // of messages
    std::vector<int> subMessages;
    int count = 0;
    Value value;
};

CString keyOf(std::size_t index) {
    CString key;
    key.Format("%04d", static_cast<int>(index));
    return key;
}

/// The order in which a map's own end releases its values.
std::vector<std::size_t> mapEndOrder(std::size_t size) {
    struct Mark {
        std::vector<std::size_t> * order;
        std::size_t place;
        ~Mark() { order->push_back(place); }
    };
    std::vector<std::size_t> order;
    {
        std::map<std::size_t, std::unique_ptr<Mark>> marks;
        for (std::size_t i = 0; i < size; ++i) {
            marks.emplace(i, new Mark{&order, i});
        }
    }
    return order;
}

class Forest {
public:
    explicit Forest(unsigned int seed) : random_(seed) {}

    Log log;
    Log expected;

    /// A chain of containers of that depth, with leaves and shared parts beside it.
    int grow(int depth) {
        int part = leaf();
        for (int i = 0; i < depth; ++i) {
            part = around(part);
        }
        return part;
    }

    Value take(int node) { return nodes_[static_cast<std::size_t>(node)].value; }

    /// What the forest itself holds is let go, so that the trees alone keep their parts alive.
    void letGo() {
        for (Node & node : nodes_) {
            if (node.count > 0) {
                node.value = nullptr;
            }
        }
    }

    /// Lets a root go, in truth and in the model.
    void release(int root) {
        Node & node = nodes_[static_cast<std::size_t>(root)];
        ++node.count;
        releaseModel(root);
        node.value = nullptr;
    }

private:
    int add(Node::Kind kind, Value value, std::string name) {
        Node node;
        node.kind = kind;
        node.value = std::move(value);
        node.name = std::move(name);
        nodes_.push_back(std::move(node));
        return static_cast<int>(nodes_.size()) - 1;
    }

    int leaf() {
        std::string const name = "leaf" + std::to_string(nodes_.size());
        return add(Node::LEAF, new Recorded<MappedRecordData>(&log, name), name);
    }

    /// Something small, sometimes a part that stands elsewhere too.
    int side() { return random_() % 4 == 0 ? static_cast<int>(random_() % nodes_.size()) : leaf(); }

    std::vector<int> partsWith(int inner) {
        std::vector<int> parts;
        for (auto i = random_() % 3; i > 0; --i) {
            parts.push_back(side());
        }
        parts.push_back(inner);
        for (auto i = random_() % 3; i > 0; --i) {
            parts.push_back(side());
        }
        for (int const part : parts) {
            ++nodes_[static_cast<std::size_t>(part)].count;
        }
        return parts;
    }

    void fill(RecordData & record, std::vector<int> const & parts) {
        for (std::size_t i = 0; i < parts.size(); ++i) {
            record.setFieldValue(keyOf(i), take(parts[i]));
        }
    }

    int around(int inner) {
        std::string const name = "container" + std::to_string(nodes_.size());
        switch (random_() % 3) {
            case 0: {
                RefCountedPtr<ListData> const list(new ListDataImpl(""));
                auto parts = partsWith(inner);
                for (int const part : parts) {
                    list->addElement(take(part));
                }
                int const node = add(Node::LIST, list, name);
                nodes_.back().parts = std::move(parts);
                return node;
            }
            case 1: {
                RefCountedPtr<RecordData> const record(new Recorded<MappedRecordData>(&log, name));
                auto parts = partsWith(inner);
                fill(*record, parts);
                int const node = add(Node::RECORD, record, name);
                nodes_.back().parts = std::move(parts);
                return node;
            }
            default:
                return messageAround(inner, name);
        }
    }

    /// The inner part stands in the body, in the header, or in a sub-message.
    int messageAround(int inner, std::string const & name) {
        RefCountedPtr<KestrinMessage> const message(new Recorded<MappedMessage>(&log, name));
        auto body = partsWith(leaf());
        auto header = partsWith(leaf());
        std::vector<int> subMessages;
        for (int i = 0; i < 2; ++i) {
            std::string const subName = name + "sub" + std::to_string(i);
            RefCountedPtr<KestrinMessage> const sub(new Recorded<MappedMessage>(&log, subName));
            auto parts = partsWith(leaf());
            fill(*sub, parts);
            message->addSubMessage(sub);
            int const node = add(Node::MESSAGE, sub, subName);
            nodes_.back().parts = std::move(parts);
            nodes_.back().count = 1;
            subMessages.push_back(node);
        }
        ++nodes_[static_cast<std::size_t>(inner)].count;
        auto const place = random_() % 3;
        if (place == 0) {
            body.push_back(inner);
        } else if (place == 1) {
            header.push_back(inner);
        } else {
            Node & sub = nodes_[static_cast<std::size_t>(subMessages[0])];
            sub.value->asRecord().setFieldValue(keyOf(sub.parts.size()), take(inner));
            sub.parts.push_back(inner);
        }
        fill(*message, body);
        fill(message->header(), header);
        int const node = add(Node::MESSAGE, message, name);
        nodes_.back().parts = std::move(body);
        nodes_.back().headerParts = std::move(header);
        nodes_.back().subMessages = std::move(subMessages);
        return node;
    }

    void releaseFields(std::vector<int> const & parts) {
        for (std::size_t const i : mapEndOrder(parts.size())) {
            releaseModel(parts[i]);
        }
    }

    void releaseModel(int index) {
        Node & node = nodes_[static_cast<std::size_t>(index)];
        if (--node.count > 0) {
            return;
        }
        if (node.kind == Node::LIST) {
            for (int const part : node.parts) {
                releaseModel(part);
            }
            return;
        }
        expected.push_back("end " + node.name);
        expected.push_back("gone " + node.name);
        for (int const subMessage : node.subMessages) {
            releaseModel(subMessage);
        }
        releaseFields(node.headerParts);
        releaseFields(node.parts);
    }

    std::mt19937 random_;
    std::vector<Node> nodes_;
};

TEST(DeferredRelease, KeepsTheOrderOfPlainRecursionAtAnyDepth) {
    int const depths[] = {1, 2, 10, 30, 60, 62, 63, 64, 65, 66, 70, 130, 300, 700};
    for (int const depth : depths) {
        for (unsigned int seed = 0; seed < 12; ++seed) {
            SCOPED_TRACE(testing::Message() << "depth " << depth << ", seed " << seed);
            Forest forest(seed * 1000 + static_cast<unsigned int>(depth));
            int const root = forest.grow(depth);
            forest.letGo();
            EXPECT_EQ(forest.log, Log{});
            forest.release(root);
            ASSERT_EQ(forest.log, forest.expected);
            EXPECT_GE(forest.log.size(), 2u);
        }
    }
}

TEST(DeferredRelease, LeavesWhatIsHeldElsewhere) {
    Log log;
    Value const held(new Recorded<MappedRecordData>(&log, "held"));
    Value middle;
    Value deep = held;
    for (int i = 0; i < 500; ++i) {
        deep = test::listAround(deep);
        if (i == 250) {
            middle = deep;
        }
    }
    deep = nullptr;
    EXPECT_EQ(log, Log{});
    EXPECT_EQ(held->getRefCount(), 2);
    EXPECT_EQ(middle->getRefCount(), 1);
    middle = nullptr;
    EXPECT_EQ(held->getRefCount(), 1);
    EXPECT_EQ(log, Log{});
}

TEST(DeferredRelease, AThreadIsAsGoodAsNewAfterwards) {
    for (int round = 0; round < 3; ++round) {
        Log log;
        Value deep(new Recorded<MappedRecordData>(&log, "innermost"));
        for (int i = 0; i < 200; ++i) {
            deep = test::listAround(deep);
        }
        deep = nullptr;
        EXPECT_EQ(log, (Log{"end innermost", "gone innermost"}));
        detail::ContainerEnd const end;
        EXPECT_FALSE(end.isDeep());
    }
}

/// Builds and drops a deep value of its own while it ends.
class Builder : public MappedRecordData {
public:
    explicit Builder(Log * log) : log_(log) {}

protected:
    ~Builder() override {
        Value own(new Recorded<MappedRecordData>(log_, "own"));
        for (int i = 0; i < 200; ++i) {
            own = test::recordAround(own);
        }
        own = nullptr;
        log_->push_back("built");
    }

private:
    Log * log_;
};

TEST(DeferredRelease, DestructorsMayReleaseDeepValuesThemselves) {
    for (int const depth : {1, 100}) {
        Log log;
        Value deep(new Builder(&log));
        for (int i = 0; i < depth; ++i) {
            deep = test::messageAround(deep);
        }
        deep = nullptr;
        std::sort(log.begin(), log.end());
        EXPECT_EQ(log, (Log{"built", "end own", "gone own"}));
    }
}

TEST(DeferredRelease, ReleasesAtOnceWhereTheListCannotGrow) {
    if (!test::AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail here";
    }
    int ends = 0;
    class Counting : public MappedRecordData {
    public:
        explicit Counting(int * ends) : ends_(ends) {}

    protected:
        ~Counting() override { ++*ends_; }

    private:
        int * ends_;
    };
    Value deep(new Counting(&ends));
    for (int i = 0; i < 300; ++i) {
        deep = test::listAround(deep);
    }
    test::AllocationFailure failure;
    deep = nullptr;
    failure.end();
    EXPECT_EQ(ends, 1);
}

// ---- A million levels ------------------------------------------------------------------------

class DeepRelease : public testing::TestWithParam<test::DeepShape> {};

TEST_P(DeepRelease, NeedsLittleStack) {
    Value deep = test::deepValue(GetParam(), test::DEEP_LEVELS);
    test::runOnStack(256 << 10, [&] { deep = nullptr; });
    EXPECT_TRUE(deep.isNull());
}

TEST_P(DeepRelease, NeedsLittleStackByEveryRoad) {
    test::DeepShape const shape = GetParam();
    std::pair<char const *, std::function<void(Value &)>> const roads[] = {
        {"setElement",
         [](Value & deep) {
             RefCountedPtr<ListData> const list(new ListDataImpl(""));
             list->addElement(deep);
             deep = nullptr;
             list->setElement(0, nullptr);
         }},
        {"removeElement",
         [](Value & deep) {
             RefCountedPtr<ListData> const list(new ListDataImpl(""));
             list->addElement(deep);
             deep = nullptr;
             list->removeElement(0);
         }},
        {"removeAllElements",
         [](Value & deep) {
             RefCountedPtr<ListData> const list(new ListDataImpl(""));
             list->addElement(deep);
             deep = nullptr;
             list->removeAllElements();
         }},
        {"list assignment",
         [](Value & deep) {
             RefCountedPtr<ListDataImpl> const list(new ListDataImpl(""));
             list->addElement(deep);
             deep = nullptr;
             *list = *RefCountedPtr<ListDataImpl>(new ListDataImpl(""));
         }},
        {"setFieldValue",
         [](Value & deep) {
             RefCountedPtr<RecordData> const record(new MappedRecordData);
             record->setFieldValue("x", deep);
             deep = nullptr;
             record->setFieldValue("x", Value());
         }},
        {"removeField",
         [](Value & deep) {
             RefCountedPtr<RecordData> const record(new MappedRecordData);
             record->setFieldValue("x", deep);
             deep = nullptr;
             record->removeField("x");
         }},
        {"removeAllFields",
         [](Value & deep) {
             RefCountedPtr<RecordData> const record(new MappedRecordData);
             record->setFieldValue("x", deep);
             deep = nullptr;
             record->removeAllFields();
         }},
        {"record assignment",
         [](Value & deep) {
             RefCountedPtr<MappedRecordData> const record(new MappedRecordData);
             record->setFieldValue("x", deep);
             deep = nullptr;
             *record = *RefCountedPtr<MappedRecordData>(new MappedRecordData);
         }},
        {"message assignment",
         [](Value & deep) {
             RefCountedPtr<MappedMessage> const message(new MappedMessage);
             message->header().setFieldValue("x", deep);
             RefCountedPtr<MappedMessage> const outer(new MappedMessage);
             outer->addSubMessage(message);
             deep = nullptr;
             *outer = *RefCountedPtr<MappedMessage>(new MappedMessage);
         }},
    };
    for (auto const & [name, road] : roads) {
        SCOPED_TRACE(name);
        Value deep = test::deepValue(shape, 20000);
        test::runOnStack(256 << 10, [&deep, &act = road] { act(deep); });
    }
}

TEST_P(DeepRelease, CopiesShareTheDepth) {
    Value deep = test::deepValue(GetParam(), 50000);
    test::runOnStack(256 << 10, [&] {
        Value copy;
        if (deep->getFieldType() == FLDTYPE_LIST) {
            copy = new ListDataImpl(deep->asList());
        } else if (auto const * const message = dynamic_cast<MappedMessage const *>(deep.get())) {
            copy = new MappedMessage(*message);
        } else {
            copy = new MappedRecordData(deep->asRecord());
        }
        deep = nullptr;
        EXPECT_EQ(copy->getRefCount(), 1);
        copy = nullptr;
    });
}

INSTANTIATE_TEST_SUITE_P(Shapes, DeepRelease, testing::ValuesIn(test::DEEP_SHAPES),
                         [](auto const & shape) { return std::string(test::nameOf(shape.param)); });

}  // namespace
}  // namespace tvk
