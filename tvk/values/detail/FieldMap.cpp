#include "tvk/values/detail/FieldMap.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedMessageHeader.h"
#include "tvk/values/MappedRecordData.h"

namespace tvk::detail {

namespace {

FieldMap::Value * copyOf(FieldMap::Value const * values, std::size_t count) {
    auto copy = std::make_unique<FieldMap::Value[]>(count);
    std::copy_n(values, count, copy.get());
    return copy.release();
}

}  // namespace

FieldMap const * FieldMap::ofOwn(RecordData const & record) {
    // By address: where two modules have a description of one class each, a record is taken for a
    // foreign one, which is as right.
    std::type_info const * const type = &typeid(record);
    if (type == &typeid(MappedRecordData)) {
        return static_cast<MappedRecordData const &>(record).fields_;
    }
    if (type == &typeid(MappedMessage)) {
        return static_cast<MappedMessage const &>(record).fields_;
    }
    if (type == &typeid(MappedMessageHeader)) {
        return static_cast<MappedMessageHeader const &>(record).fields_;
    }
    return nullptr;
}

FieldMap::FieldMap(FieldMap const & other) {
    if (other.hasValues()) {
        values_ = copyOf(other.values_, other.shape_->count());
        shape_ = other.shape_;
        form_ = VALUES;
    } else if (other.form_ == MAP) {
        map_ = new Map(*other.map_);
        form_ = MAP;
    }
}

bool FieldMap::has(CString const & name) const {
    return hasValues() ? shape_->find(name) != shape_->count()
                       : form_ == MAP && map_->count(name) != 0;
}

std::vector<CString> FieldMap::names() const {
    std::vector<CString> names;
    names.reserve(count());
    if (hasValues()) {
        for (std::size_t place = 0; place < shape_->count(); ++place) {
            names.push_back(shape_->name(place));
        }
    } else if (form_ == MAP) {
        for (auto const & field : *map_) {
            names.push_back(field.first);
        }
    }
    return names;
}

std::vector<RecordData::Field> FieldMap::views(RecordData const & record) const {
    std::vector<RecordData::Field> views;
    views.reserve(count());
    if (hasValues()) {
        for (std::size_t place = 0; place < shape_->count(); ++place) {
            views.push_back({&record, &shape_->name(place), values_[place].get()});
        }
    } else if (form_ == MAP) {
        for (auto const & field : *map_) {
            views.push_back({&record, &field.first, field.second.get()});
        }
    }
    return views;
}

FieldMap::Value FieldMap::get(CString const & name) const {
    if (hasValues()) {
        std::size_t const place = shape_->find(name);
        return place == shape_->count() ? nullptr : values_[place];
    }
    if (form_ == MAP) {
        auto const found = map_->find(name);
        return found == map_->end() ? nullptr : found->second;
    }
    return nullptr;
}

void FieldMap::set(CString const & name, Value const & value) {
    if (hasValues()) {
        std::size_t const place = shape_->find(name);
        if (place != shape_->count()) {
            values_[place] = value;
            return;
        }
    }
    ownMap().try_emplace(name).first->second = value;
}

void FieldMap::remove(CString const & name) {
    if (has(name)) {
        ownMap().erase(name);
    }
}

void FieldMap::removeAll() {
    if (form_ != EMPTY) {
        ownMap().clear();
    }
}

FieldMap::Map const & FieldMap::map() const {
    static Map const NO_FIELDS;
    return form_ == EMPTY ? NO_FIELDS : ownMap();
}

void FieldMap::swap(FieldMap & other) {
    ownValues();
    other.ownValues();
    shape_.swap(other.shape_);
    std::swap(values_, other.values_);  // whichever of the two pointers it is
    std::swap(form_, other.form_);
}

void FieldMap::addMissing(RecordData const & source) {
    std::vector<CString> const names = source.getFieldNames();
    unsigned int const count = source.getFieldCount();
    for (unsigned int i = 0; i < count; ++i) {
        map().emplace(names[i], source.getFieldValue(names[i]));
    }
}

void FieldMap::endAll(ContainerEnd & end) {
    if (end.isDeep()) {
        if (hasValues()) {
            for (std::size_t place = 0; place < shape_->count(); ++place) {
                end.defer(values_[place]);
            }
        } else if (form_ == MAP) {
            for (auto & field : *map_) {
                end.defer(field.second);
            }
        }
    }
    release();
}

FieldMap::Map & FieldMap::ownMap() const {
    if (form_ == MAP) {
        return *map_;
    }
    auto map = std::make_unique<Map>();
    if (hasValues()) {
        for (std::size_t place = 0; place < shape_->count(); ++place) {
            map->emplace_hint(map->end(), shape_->name(place), values_[place]);
        }
        const_cast<FieldMap *>(this)->release();
    }
    map_ = map.release();
    form_ = MAP;
    return *map_;
}

/// Values that lie in another's memory move to memory of their own.
void FieldMap::ownValues() {
    if (form_ == VALUES_ELSEWHERE) {
        Value * const own = copyOf(values_, shape_->count());
        release();
        values_ = own;
        form_ = VALUES;
    }
}

/// Lets all values go, the last one first.
void FieldMap::release() {
    switch (std::exchange(form_, EMPTY)) {
        case VALUES:
            delete[] values_;
            break;
        case VALUES_ELSEWHERE:
            std::destroy(std::make_reverse_iterator(values_ + shape_->count()),
                         std::make_reverse_iterator(values_));
            break;
        case MAP:
            delete map_;
            break;
        case EMPTY:
            break;
    }
    values_ = nullptr;
}

}  // namespace tvk::detail
