#include "tvk/values/detail/FieldMap.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedMessageHeader.h"
#include "tvk/values/MappedRecordData.h"

namespace tvk::detail {

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

FieldMap::FieldMap(FieldMap const & other) : map_(other.map_) {
    if (other.values_ != nullptr) {
        std::size_t const count = other.shape_->count();
        values_ = std::make_unique<Value[]>(count);
        std::copy_n(other.values_.get(), count, values_.get());
        shape_ = other.shape_;
    }
}

bool FieldMap::has(CString const & name) const {
    return values_ == nullptr ? map_.count(name) != 0 : shape_->find(name) != shape_->count();
}

std::vector<CString> FieldMap::names() const {
    std::vector<CString> names;
    names.reserve(count());
    if (values_ == nullptr) {
        for (auto const & field : map_) {
            names.push_back(field.first);
        }
    } else {
        for (std::size_t place = 0; place < shape_->count(); ++place) {
            names.push_back(shape_->name(place));
        }
    }
    return names;
}

std::vector<RecordData::Field> FieldMap::views(RecordData const & record) const {
    std::vector<RecordData::Field> views;
    views.reserve(count());
    if (values_ == nullptr) {
        for (auto const & field : map_) {
            views.push_back({&record, &field.first, field.second.get()});
        }
    } else {
        for (std::size_t place = 0; place < shape_->count(); ++place) {
            views.push_back({&record, &shape_->name(place), values_[place].get()});
        }
    }
    return views;
}

FieldMap::Value FieldMap::get(CString const & name) const {
    if (values_ == nullptr) {
        auto const found = map_.find(name);
        return found == map_.end() ? nullptr : found->second;
    }
    std::size_t const place = shape_->find(name);
    return place == shape_->count() ? nullptr : values_[place];
}

void FieldMap::set(CString const & name, Value const & value) {
    if (values_ != nullptr) {
        std::size_t const place = shape_->find(name);
        if (place != shape_->count()) {
            values_[place] = value;
            return;
        }
    }
    ownMap().try_emplace(name).first->second = value;
}

void FieldMap::swap(FieldMap & other) noexcept {
    shape_.swap(other.shape_);
    values_.swap(other.values_);
    map_.swap(other.map_);
}

void FieldMap::addMissing(RecordData const & source) {
    std::vector<CString> const names = source.getFieldNames();
    unsigned int const count = source.getFieldCount();
    for (unsigned int i = 0; i < count; ++i) {
        map().emplace(names[i], source.getFieldValue(names[i]));
    }
}

void FieldMap::adopt(std::shared_ptr<FieldShape const> shape, Value * arrival,
                     std::size_t arrived) {
    values_ = std::make_unique<Value[]>(shape->count());
    shape_ = std::move(shape);
    for (std::size_t i = 0; i < arrived; ++i) {
        values_[shape_->placeOfArrival(i)] = std::move(arrival[i]);
    }
}

void FieldMap::endAll(ContainerEnd & end) {
    if (values_ != nullptr) {
        std::size_t const count = shape_->count();
        if (end.isDeep()) {
            for (std::size_t place = 0; place < count; ++place) {
                end.defer(values_[place]);
            }
        } else {
            for (std::size_t place = count; place-- > 0;) {
                values_[place] = nullptr;
            }
        }
        return;
    }
    if (end.isDeep()) {
        for (auto & field : map_) {
            end.defer(field.second);
        }
    }
    map_.clear();
}

FieldMap::Map & FieldMap::ownMap() const {
    if (values_ != nullptr) {
        Map map;
        for (std::size_t place = 0; place < shape_->count(); ++place) {
            map.emplace_hint(map.end(), shape_->name(place), values_[place]);
        }
        map_.swap(map);
        values_ = nullptr;
    }
    return map_;
}

}  // namespace tvk::detail
