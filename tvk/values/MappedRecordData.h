#pragma once

#include "tvk/values/detail/MappedFields.h"

namespace tvk {

/// A record in an ordered map. Fields come in ascending order of their names' bytes, never in the
/// order in which they were set.
///
/// Ownership: one count on each value. Copies are shallow: a new map of the same value objects.
/// Failure:   the accessors of other kinds throw their texts, see FieldValue.
class TVK_API MappedRecordData : public detail::MappedFields<RecordData> {
public:
    MappedRecordData();
    MappedRecordData(MappedRecordData const & other);
    MappedRecordData(RecordData const & other);

    /// Replaces all fields.
    MappedRecordData & operator=(MappedRecordData const & other);
    /// Deliberate: adds the fields whose names are not here yet; own fields win and old ones stay.
    /// Modules fill in defaults with it.
    MappedRecordData & operator=(RecordData const & other);

protected:
    ~MappedRecordData() override;

private:
    friend class detail::ReadyMade;

    /// With fields in one block with this object.
    explicit MappedRecordData(detail::FieldMap * fields);
};

}  // namespace tvk
