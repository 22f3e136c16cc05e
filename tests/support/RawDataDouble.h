#pragma once

#include <optional>
#include <string>
#include <utility>

#include "tests/support/ValueDouble.h"
#include "tvk/values/RawData.h"

namespace tvk::test {

/// Bytes that are not the library's; it may claim any size.
class RawDataDouble : public ValueDouble<RawData, FLDTYPE_RAW> {
public:
    explicit RawDataDouble(std::string bytes) : bytes_(std::move(bytes)) {}
    ~RawDataDouble() override = default;

    std::optional<unsigned int> size;  // what getSize claims

    RawData & asRawData() override { return *this; }
    RawData const & asRawData() const override { return *this; }

    void * getBuffer() const override { return const_cast<char *>(bytes_.data()); }
    unsigned int getSize() const override {
        return size.value_or(static_cast<unsigned int>(bytes_.size()));
    }
    unsigned int getCapacity() const override { return static_cast<unsigned int>(bytes_.size()); }
    RawData & appendData(void const * data, unsigned int length) override {
        bytes_.append(static_cast<char const *>(data), length);
        return *this;
    }
    void setSize(unsigned int newSize, int fill) override {
        bytes_.resize(newSize, static_cast<char>(fill));
    }
    void clear() override { bytes_.clear(); }

private:
    std::string bytes_;
};

}  // namespace tvk::test
