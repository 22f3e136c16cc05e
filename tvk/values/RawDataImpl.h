#pragma once

#include "tvk/values/RawData.h"

namespace tvk {

/// A growing byte buffer. Growth is exact: the amount asked for, rounded up to a multiple of 4.
///
/// Filling:  setSize first, then write through getBuffer. Bytes that come in by a constructor, an
///           assignment or appendData stand in the buffer but leave the size as it was.
/// Failure:  std::bad_alloc; the object keeps its old buffer. The accessors of other kinds throw
///           their texts, see FieldValue.
class TVK_API RawDataImpl : public RawData {
public:
    RawDataImpl();
    /// A buffer of that capacity; the size is 0.
    explicit RawDataImpl(unsigned int capacity);
    RawDataImpl(void const * data, unsigned int length);
    RawDataImpl(RawDataImpl const & other);
    RawDataImpl(RawData const & other);

    /// clear(), then the source's bytes, of which the size of the source is the count.
    RawDataImpl & operator=(RawDataImpl const & other);
    RawDataImpl & operator=(RawData const & other);

    bool operator==(RawDataImpl const & other) const;

    FieldTypeEnum getFieldType() const override;
    int intValue() const override;
    long longValue() const override;
    long long longlongValue() const override;
    double doubleValue() const override;
    CString const & asString() const override;
    ListData & asList() override;
    ListData const & asList() const override;
    RecordData & asRecord() override;
    RecordData const & asRecord() const override;
    RawData & asRawData() override;
    RawData const & asRawData() const override;
    /// "rawData@%p %d bytes" of the buffer and the size.
    CString toString() const override;

    void * getBuffer() const override;
    unsigned int getSize() const override;
    unsigned int getCapacity() const override;
    /// Copies the bytes behind the current size, and leaves the size. The buffer grows only when
    /// `length` alone passes the capacity. Requires: size and length together fit the capacity
    /// then.
    RawData & appendData(void const * data, unsigned int length) override;
    /// Asks for room of the new and the current size together; shrinking gives nothing back.
    void setSize(unsigned int size, int fill) override;
    void clear() override;

private:
    ~RawDataImpl() override;

    void internalAppendData(void const * data, unsigned int length);
    void ensureDataBuffer(unsigned int amount);

    unsigned int capacity_ = 0;
    void * data_ = nullptr;
    unsigned int size_ = 0;
};

}  // namespace tvk
