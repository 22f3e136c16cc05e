#pragma once

#include "tvk/values/FieldValue.h"

namespace tvk {

/// A value of bytes: a resizable buffer that can travel in a field.
class TVK_API RawData : public FieldValue {
public:
    ~RawData() override = 0;

    /// Null when no buffer exists. The bytes may be written up to the capacity; the pointer lives
    /// until the next operation that grows or clears.
    virtual void * getBuffer() const = 0;
    virtual unsigned int getSize() const = 0;
    virtual unsigned int getCapacity() const = 0;
    virtual RawData & appendData(void const * data, unsigned int length) = 0;
    /// Bytes that come in between the old and a larger new size get the low byte of `fill`.
    virtual void setSize(unsigned int size, int fill) = 0;
    virtual void clear() = 0;
};

}  // namespace tvk
