#pragma once

#include <map>
#include <memory>
#include <vector>

#include "tvk/platform/CString.h"
#include "tvk/values/RecordData.h"
#include "tvk/values/RefCountedPtr.h"
#include "tvk/values/detail/DeferredRelease.h"
#include "tvk/values/detail/FieldShape.h"
#include "tvk/values/detail/MappedFields.h"

namespace tvk::detail {

/// The fields of a map-backed record, in ascending order of the names' bytes.
///
/// There are two forms. A record that its builder gave a shape holds its values beside the names
/// that it shares with its like; the first change of the set of names, or a look at map(), turns it
/// into a map of its own for good. Views of fields point at names: these keep their addresses while
/// the field exists, so a record keeps its shape even then.
class FieldMap {
public:
    using Value = RefCountedPtr<FieldValue>;
    using Map = std::map<CString, Value>;

    /// The fields of a record, for builders inside the library.
    template <class Interface>
    static FieldMap & of(MappedFields<Interface> & record) {
        return *record.fields_;
    }

    template <class Interface>
    static FieldMap const & of(MappedFields<Interface> const & record) {
        return *record.fields_;
    }

    /// Those of a record of exactly one of the library's own classes, which give getAllFields in the
    /// order that stands here; null for any other record, derived ones included.
    static FieldMap const * ofOwn(RecordData const & record);

    FieldMap() = default;
    FieldMap(FieldMap const & other);
    FieldMap & operator=(FieldMap const &) = delete;
    virtual ~FieldMap() = default;

    std::size_t count() const { return values_ == nullptr ? map_.size() : shape_->count(); }
    bool has(CString const & name) const;
    std::vector<CString> names() const;
    /// With `record` as the record of each.
    std::vector<RecordData::Field> views(RecordData const & record) const;
    Value get(CString const & name) const;
    void set(CString const & name, Value const & value);

    void swap(FieldMap & other) noexcept;

    Map & map() { return ownMap(); }
    Map const & map() const { return ownMap(); }

    /// The names of a record that has a shape, null for one that has a map of its own.
    FieldShape const * shape() const { return values_ == nullptr ? nullptr : shape_.get(); }
    /// Requires: shape() is not null. One for each name, in their order.
    Value const * values() const { return values_.get(); }

    /// Inserts each field of the source whose name is not here yet.
    void addMissing(RecordData const & source);

    /// Gives an empty record all its fields: `arrival` holds the values in the order in which their
    /// names came when the shape was made, and is left with null references. Where a name comes
    /// again, the last value stands.
    void adopt(std::shared_ptr<FieldShape const> shape, Value * arrival, std::size_t arrived);

    /// Releases all values, the last field first; `end` is the one of the destructor that calls.
    void endAll(ContainerEnd & end);

private:
    Map & ownMap() const;

    std::shared_ptr<FieldShape const> shape_;
    mutable std::unique_ptr<Value[]> values_;  // one for each name of the shape; null: see map_
    mutable Map map_;
};

}  // namespace tvk::detail
