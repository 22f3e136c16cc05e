#include "tvk/values/MappedRecordData.h"

#include "tvk/values/detail/FieldMap.h"
#include "tvk/values/detail/ReadyMade.h"

namespace tvk {

MappedRecordData::MappedRecordData() : MappedFields(new detail::FieldMap) {}

MappedRecordData::MappedRecordData(MappedRecordData const & other)
    : MappedFields(new detail::FieldMap(other.fields())) {}

MappedRecordData::MappedRecordData(RecordData const & other) : MappedRecordData() {
    fields().addMissing(other);
}

MappedRecordData::MappedRecordData(detail::FieldMap * fields) : MappedFields(fields, true) {}

MappedRecordData::~MappedRecordData() {
    detail::ContainerEnd end;
    fields().endAll(end);
    detail::FieldMap::end<detail::FieldMap>(*this);
}

MappedRecordData & MappedRecordData::operator=(MappedRecordData const & other) {
    if (&other != this) {
        // The old fields go last: one of them may be all that keeps the source alive.
        detail::FieldMap fieldsOfOther(other.fields());
        fields().swap(fieldsOfOther);
    }
    return *this;
}

MappedRecordData & MappedRecordData::operator=(RecordData const & other) {
    if (&other != this) {
        fields().addMissing(other);
    }
    return *this;
}

detail::ReadyMade::Value detail::ReadyMade::record(ShapeReference shape,
                                                   FieldValue * const * arrival) {
    return inOneBlock<MappedRecordData, FieldMap>(std::move(shape), arrival);
}

}  // namespace tvk
