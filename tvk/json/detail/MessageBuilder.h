#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "tvk/json/SimpleObjectCache.h"
#include "tvk/json/detail/CacheLookup.h"
#include "tvk/json/detail/NameSequences.h"
#include "tvk/values/FieldValue.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk::detail {

/// Builds the value of one JSON text from the scanner's events: a message or record, or a list, with
/// strings and numbers from a cache.
///
/// A container is made at its end, when all that it holds is known. Until then its values wait here,
/// those of the inner containers behind those of the outer ones, and so do the names of a record
/// that no known sequence has; the others have come before and are found by comparing them with the
/// one that is expected.
///
/// Ownership: what waits, and the last result, until the next start.
/// Failure:   what the cache and the containers throw, and JsonUtil::XParsingError for a scalar
///            outside of any container. What waits then stays until the next start.
class MessageBuilder {
public:
    /// Texts may come as slices of the input.
    static constexpr bool TERMINATED_COPIES = false;

    using Value = RefCountedPtr<FieldValue>;
    /// What an object becomes that no other container is around.
    enum class Root { MESSAGE, RECORD };

    /// The cache is borrowed.
    explicit MessageBuilder(SimpleObjectCache * cache);
    MessageBuilder(MessageBuilder const &) = delete;
    MessageBuilder & operator=(MessageBuilder const &) = delete;
    ~MessageBuilder();

    SimpleObjectCache * cache() const { return cache_; }

    /// Drops the last result and what a failure has left behind. The arguments are those of the scan
    /// that follows.
    void start(Root root, char const * data, unsigned int size, int options);
    /// What has come of the scan: null where there was no value.
    Value const & result() const { return result_; }

    void startObject() { open(true); }
    void startArray() { open(false); }
    void endObject();
    void endArray();
    void fieldName(char const * name, unsigned int length);
    /// Takes the name that the text goes on with, its quotes and the colon behind it, where it is one
    /// that has followed before. Returns how many bytes that is, or 0.
    unsigned int knownName(char const * text, std::size_t left);
    void stringValue(unsigned int hash, char const * text, unsigned int length) {
        requireContainer();
        attach(CacheLookup::cachedString(*cache_, hash, text, length));
    }
    void numberValue(unsigned int hash, char const * text, unsigned int length,
                     char const * fractionStart, char const * exponentStart) {
        requireContainer();
        attach(
            CacheLookup::cachedNumber(*cache_, hash, text, length, fractionStart, exponentStart));
    }
    void booleanValue(bool value) {
        requireContainer();
        attach(value ? FieldValue::TRUE_VALUE : FieldValue::FALSE_VALUE);
    }
    void nullValue();

private:
    using Sequence = NameSequences::Sequence;

    /// A container whose end is still to come. In a list, and in a record whose names wait, there is
    /// no sequence.
    struct Open {
        bool isRecord;
        Sequence * names;         // of the values that wait
        Sequence * namesAndNext;  // with the name seen last
        std::size_t firstValue;   // that waits
        std::size_t firstName;    // likewise
    };

    class NameTexts;

    void open(bool isRecord) {
        stack_.push_back({isRecord, isRecord ? sequences_.empty() : nullptr, nullptr,
                          waiting_.size(), names_.size()});
    }
    void attach(Value value) {
        waiting_.push_back(value.get());
        value.detach();
        // The name seen last has its value; in other containers both are null.
        stack_.back().names = stack_.back().namesAndNext;
    }
    bool isInput(char const * text) const {
        return reinterpret_cast<std::uintptr_t>(text) - reinterpret_cast<std::uintptr_t>(data_) <
               size_;
    }
    std::size_t leftOf(char const * text) const {
        return size_ - static_cast<std::size_t>(text - data_);
    }
    void drop();
    void close(Value container);
    void leaveSequence(Open & record);
    void keepName(char const * name, unsigned int length);
    ShapeReference shapeOf(Open & record);
    CString nameOfList() const;
    void requireContainer() const {
        if (stack_.empty()) {
            refuseScalar();
        }
    }
    [[noreturn]] void refuseScalar() const;

    SimpleObjectCache * const cache_;
    NameSequences sequences_;
    std::vector<Open> stack_;
    std::vector<FieldValue *> waiting_;  // one count on each
    std::vector<CString> names_;
    Value result_;
    std::unique_ptr<NameTexts> nameTexts_;

    Root root_ = Root::RECORD;
    char const * data_ = nullptr;
    unsigned int size_ = 0;
    int options_ = 0;
};

inline void MessageBuilder::fieldName(char const * name, unsigned int length) {
    Open & record = stack_.back();
    if (record.names != nullptr) {
        // A slice of the input has its quote before it and perhaps a colon behind the other one.
        if (isInput(name)) {
            char const * const quote = name - 1;
            Sequence * const known = record.names->next(quote, leftOf(quote));
            if (known != nullptr && known->wireSize() == length + 3) {
                record.namesAndNext = known;
                return;
            }
        }
        record.namesAndNext = sequences_.extended(*record.names, name, length);
        if (record.namesAndNext != nullptr) {
            return;
        }
        leaveSequence(record);
    }
    keepName(name, length);
}

inline unsigned int MessageBuilder::knownName(char const * text, std::size_t left) {
    Open & record = stack_.back();
    if (record.names == nullptr) {
        return 0;
    }
    Sequence * const known = record.names->next(text, left);
    if (known == nullptr) {
        return 0;
    }
    record.namesAndNext = known;
    return known->wireSize();
}

inline void MessageBuilder::nullValue() {
    requireContainer();
    Open & container = stack_.back();
    if (container.names != nullptr) {
        container.names = sequences_.lastPassedOver(*container.namesAndNext);
    } else if (container.isRecord) {
        names_.pop_back();
    }
}

}  // namespace tvk::detail
