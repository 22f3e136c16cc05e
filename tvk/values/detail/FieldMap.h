#pragma once

#include <cstddef>
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
/// There are two forms. A record that was made with a shape holds its values beside the names that it
/// shares with its like, see ReadyMade; the first change of the set of names, or a look at map(),
/// turns it into a map of its own for good. Views of fields point at names: these keep their
/// addresses while the field exists, so a record keeps its shape even then.
class FieldMap {
public:
    using Value = RefCountedPtr<FieldValue>;
    using Map = std::map<CString, Value>;

    /// The fields of a record, for what is inside the library.
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

    /// Ends the fields of a record, which has released their values: in the record's own block or in
    /// one of theirs. `Fields` is what the record was made with.
    template <class Fields, class Interface>
    static void end(MappedFields<Interface> & record) {
        auto * const fields = static_cast<Fields *>(record.fields_);
        if (record.isInOneBlock_) {
            std::destroy_at(fields);
        } else {
            delete fields;
        }
    }

    FieldMap() = default;
    /// Values for all names of the shape, in memory that outlives this object.
    FieldMap(ShapeReference shape, Value * values)
        : shape_(std::move(shape)), form_(VALUES_ELSEWHERE) {
        values_ = values;
    }
    FieldMap(FieldMap const & other);
    FieldMap & operator=(FieldMap const &) = delete;
    ~FieldMap() { release(); }

    std::size_t count() const {
        return hasValues() ? shape_->count() : form_ == MAP ? map_->size() : 0;
    }
    bool has(CString const & name) const;
    std::vector<CString> names() const;
    /// With `record` as the record of each.
    std::vector<RecordData::Field> views(RecordData const & record) const;
    Value get(CString const & name) const;
    void set(CString const & name, Value const & value);
    void remove(CString const & name);
    void removeAll();

    void swap(FieldMap & other);

    Map & map() { return ownMap(); }
    Map const & map() const;

    /// The names of a record that has a shape, null for one that has a map of its own.
    FieldShape const * shape() const { return hasValues() ? shape_.get() : nullptr; }
    /// Requires: shape() is not null. One for each name, in their order.
    Value const * values() const { return values_; }

    /// Inserts each field of the source whose name is not here yet.
    void addMissing(RecordData const & source);

    /// Releases all values, the last field first; `end` is the one of the destructor that calls.
    void endAll(ContainerEnd & end);

private:
    enum Form : unsigned char { EMPTY, VALUES, VALUES_ELSEWHERE, MAP };

    bool hasValues() const { return form_ == VALUES || form_ == VALUES_ELSEWHERE; }
    Map & ownMap() const;
    void ownValues();
    void release();

    ShapeReference shape_;
    union {
        mutable Value * values_ = nullptr;  // one for each name of the shape
        mutable Map * map_;
    };
    mutable Form form_ = EMPTY;
};

}  // namespace tvk::detail
