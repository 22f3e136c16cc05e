#pragma once

#include <cstddef>
#include <new>

#include "tvk/platform/CString.h"
#include "tvk/values/RefCounted.h"
#include "tvk/values/detail/FieldMap.h"

namespace tvk::detail {

/// Makes containers whose content is all there already, in as few blocks of memory as can be: a
/// record or message in one with its fields and values, a list in two.
///
/// Values:  one count on each goes over to the container. Where a name comes again, the last value
///          stands.
/// Failure: std::bad_alloc, for a list also what ListDataImpl says; the counts stay the caller's.
class ReadyMade {
public:
    using Value = RefCountedPtr<FieldValue>;

    /// `arrival` holds a value for each name of the shape, in the order of their arrival. A record
    /// without any has no shape.
    static Value record(ShapeReference shape, FieldValue * const * arrival);
    static Value message(ShapeReference shape, FieldValue * const * arrival);
    static Value list(CString const & elementTypeName, FieldValue * const * elements,
                      std::size_t count);

private:
    /// Record: has a constructor that takes fields in the block. Fields: a FieldMap.
    template <class Record, class Fields>
    static Value inOneBlock(ShapeReference shape, FieldValue * const * arrival);

    static void arrange(FieldShape const & shape, FieldValue * const * arrival, Value * places);
};

template <class Record, class Fields>
ReadyMade::Value ReadyMade::inOneBlock(ShapeReference shape, FieldValue * const * arrival) {
    static_assert(sizeof(Record) % alignof(Fields) == 0 && sizeof(Fields) % alignof(Value) == 0);
    std::size_t const count = shape.isNull() ? 0 : shape->count();
    void * const block =
        RefCounted::operator new(sizeof(Record) + sizeof(Fields) + count * sizeof(Value));
    void * const behindRecord = static_cast<char *>(block) + sizeof(Record);
    if (count == 0) {
        return new (block) Record(new (behindRecord) Fields);
    }
    void * const behindFields = static_cast<char *>(behindRecord) + sizeof(Fields);
    auto * const values = static_cast<Value *>(behindFields);
    arrange(*shape.get(), arrival, values);
    return new (block) Record(::new (behindRecord) Fields(std::move(shape), values));
}

}  // namespace tvk::detail
