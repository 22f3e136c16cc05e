#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tvk/values/FieldValue.h"

namespace tvk::test {

/// What a test wants to know about objects that end: how many live, and in which order things
/// happened.
struct ProbeLog {
    int alive = 0;
    std::vector<std::string> events;
};

/// The accessors of a value whose only content is a text, for doubles of any interface above
/// FieldValue; all but the one of the text throw.
template <class Interface>
class TextAccessors : public Interface {
public:
    explicit TextAccessors(std::string const & text = "") : text_(text.c_str()) {}

    int intValue() const override { refuse(); }
    long longValue() const override { refuse(); }
    long long longlongValue() const override { refuse(); }
    double doubleValue() const override { refuse(); }
    CString const & asString() const override { return text_; }
    ListData & asList() override { refuse(); }
    ListData const & asList() const override { refuse(); }
    RecordData & asRecord() override { refuse(); }
    RecordData const & asRecord() const override { refuse(); }
    RawData & asRawData() override { refuse(); }
    RawData const & asRawData() const override { refuse(); }
    CString toString() const override { return text_; }

protected:
    ~TextAccessors() override = default;

    [[noreturn]] static void refuse() { throw const_cast<char *>("a double has a text alone"); }

private:
    CString text_;
};

/// A value of any kind that writes its making and its end into a log, which must outlive it.
class ProbeValue : public TextAccessors<FieldValue> {
public:
    ProbeValue(ProbeLog & log, FieldTypeEnum type, std::string const & name)
        : TextAccessors(name), log_(log), type_(type), name_(name) {
        ++log_.alive;
        log_.events.push_back("make " + name_);
    }

    std::string const & name() const { return name_; }

    FieldTypeEnum getFieldType() const override { return type_; }

private:
    ~ProbeValue() override {
        --log_.alive;
        log_.events.push_back("end " + name_);
    }

    ProbeLog & log_;
    FieldTypeEnum type_;
    std::string name_;
};

}  // namespace tvk::test
