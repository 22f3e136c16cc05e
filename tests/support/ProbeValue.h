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

/// A value of any kind that writes its making and its end into a log, which must outlive it. It has a
/// text; every other accessor throws.
class ProbeValue : public FieldValue {
public:
    ProbeValue(ProbeLog & log, FieldTypeEnum type, std::string const & name)
        : log_(log), type_(type), name_(name), text_(name.c_str()) {
        ++log_.alive;
        log_.events.push_back("make " + name_);
    }

    std::string const & name() const { return name_; }

    FieldTypeEnum getFieldType() const override { return type_; }
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

private:
    ~ProbeValue() override {
        --log_.alive;
        log_.events.push_back("end " + name_);
    }

    [[noreturn]] static void refuse() { throw const_cast<char *>("a probe has a text alone"); }

    ProbeLog & log_;
    FieldTypeEnum type_;
    std::string name_;
    CString text_;
};

}  // namespace tvk::test
