#include "tvk/values/RawDataImpl.h"

#include <cassert>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "tvk/values/detail/WrongKind.h"

namespace tvk {

RawData::~RawData() = default;

RawDataImpl::RawDataImpl() = default;

RawDataImpl::RawDataImpl(unsigned int capacity) {
    if (capacity > 0) {
        ensureDataBuffer(capacity);
    }
}

RawDataImpl::RawDataImpl(void const * data, unsigned int length) {
    internalAppendData(data, length);
}

RawDataImpl::RawDataImpl(RawDataImpl const & other) : RawData(other) {
    internalAppendData(other.data_, other.size_);
}

RawDataImpl::RawDataImpl(RawData const & other) : RawData(other) {
    unsigned int const size = other.getSize();
    internalAppendData(other.getBuffer(), size);
}

RawDataImpl::~RawDataImpl() { std::free(data_); }

RawDataImpl & RawDataImpl::operator=(RawDataImpl const & other) {
    return *this = static_cast<RawData const &>(other);
}

RawDataImpl & RawDataImpl::operator=(RawData const & other) {
    if (&other != this) {
        clear();
        unsigned int const size = other.getSize();
        internalAppendData(other.getBuffer(), size);
    }
    return *this;
}

bool RawDataImpl::operator==(RawDataImpl const & other) const {
    return size_ == other.size_ && (size_ == 0 || std::memcmp(data_, other.data_, size_) == 0);
}

FieldTypeEnum RawDataImpl::getFieldType() const { return FLDTYPE_RAW; }

int RawDataImpl::intValue() const { detail::throwWrongKind("not a integer value"); }

long RawDataImpl::longValue() const { detail::throwWrongKind("not a long integer value"); }

long long RawDataImpl::longlongValue() const {
    detail::throwWrongKind("not a long long integer value");
}

double RawDataImpl::doubleValue() const { detail::throwWrongKind("not a double value"); }

CString const & RawDataImpl::asString() const { detail::throwWrongKind("not a string data field"); }

ListData & RawDataImpl::asList() { detail::throwWrongKind("not a list data field"); }

ListData const & RawDataImpl::asList() const { detail::throwWrongKind("not a list data field"); }

RecordData & RawDataImpl::asRecord() { detail::throwWrongKind("not a record data field"); }

RecordData const & RawDataImpl::asRecord() const {
    detail::throwWrongKind("not a record data field");
}

RawData & RawDataImpl::asRawData() { return *this; }

RawData const & RawDataImpl::asRawData() const { return *this; }

CString RawDataImpl::toString() const {
    CString text;
    text.Format("rawData@%p %d bytes", data_, static_cast<int>(size_));
    return text;
}

void * RawDataImpl::getBuffer() const { return data_; }

unsigned int RawDataImpl::getSize() const { return size_; }

unsigned int RawDataImpl::getCapacity() const { return capacity_; }

RawData & RawDataImpl::appendData(void const * data, unsigned int length) {
    internalAppendData(data, length);
    return *this;
}

void RawDataImpl::setSize(unsigned int size, int fill) {
    // Deliberate: the sum of both sizes, so that even a shrink can grow the buffer. Agents size
    // their receive buffers by the capacity that this gives.
    std::uint64_t const needed = std::uint64_t{size} + size_;
    if (needed > capacity_) {
        if (needed > UINT32_MAX) {
            throw std::bad_alloc();
        }
        ensureDataBuffer(static_cast<unsigned int>(needed));
    }
    if (size > size_) {
        std::memset(static_cast<char *>(data_) + size_, static_cast<unsigned char>(fill),
                    size - size_);
    }
    size_ = size;
}

void RawDataImpl::clear() {
    std::free(data_);
    capacity_ = 0;
    data_ = nullptr;
    size_ = 0;
}

void RawDataImpl::internalAppendData(void const * data, unsigned int length) {
    if (length > capacity_) {
        ensureDataBuffer(length);
    }
    assert(std::uint64_t{size_} + length <= capacity_);
    if (length > 0) {
        std::memcpy(static_cast<char *>(data_) + size_, data, length);
    }
    // Deliberate: the size stays. Whoever fills a value by appending sets the size himself, before.
}

/// Brings the buffer to exactly `amount` bytes, rounded up to a multiple of 4.
void RawDataImpl::ensureDataBuffer(unsigned int amount) {
    std::uint64_t const rounded = (std::uint64_t{amount} + 3) & ~std::uint64_t{3};
    if (rounded > UINT32_MAX) {
        throw std::bad_alloc();
    }
    void * const grown = std::realloc(data_, static_cast<std::size_t>(rounded));
    if (grown == nullptr && rounded != 0) {
        throw std::bad_alloc();
    }
    data_ = grown;
    capacity_ = static_cast<unsigned int>(rounded);
}

}  // namespace tvk
