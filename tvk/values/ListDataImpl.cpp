#include "tvk/values/ListDataImpl.h"

#include <algorithm>

#include "tvk/values/detail/DeferredRelease.h"
#include "tvk/values/detail/PlaceLimit.h"
#include "tvk/values/detail/ReadyMade.h"
#include "tvk/values/detail/WrongKind.h"

namespace tvk {

ListData::~ListData() = default;

ListDataImpl::ListDataImpl(CString const & elementTypeName) : elementTypeName_(elementTypeName) {}

ListDataImpl::ListDataImpl(unsigned int places, CString const & elementTypeName)
    : elementTypeName_(elementTypeName) {
    detail::reservePlaces(elements_, places);
}

ListDataImpl::ListDataImpl(ListDataImpl const & other)
    : ListData(other), elements_(other.elements_), elementTypeName_(other.elementTypeName_) {}

ListDataImpl::ListDataImpl(ListData const & other)
    : ListData(other), elementTypeName_(other.getElementTypeName()) {
    detail::reservePlaces(elements_, other.getCount());
    appendElementsOf(other);
}

ListDataImpl::~ListDataImpl() {
    detail::ContainerEnd end;
    end.releaseAll(elements_);
}

ListDataImpl & ListDataImpl::operator=(ListDataImpl const & other) {
    if (&other != this) {
        elementTypeName_ = other.elementTypeName_;
        // The old elements go last: one of them may be all that keeps the source alive.
        auto elements = other.elements_;
        elements_.swap(elements);
    }
    return *this;
}

ListDataImpl & ListDataImpl::operator=(ListData const & other) {
    if (&other != this) {
        elementTypeName_ = other.getElementTypeName();
        appendElementsOf(other);
    }
    return *this;
}

FieldTypeEnum ListDataImpl::getFieldType() const { return FLDTYPE_LIST; }

int ListDataImpl::intValue() const { detail::throwWrongKind("not a integer value"); }

long ListDataImpl::longValue() const { detail::throwWrongKind("not a long integer value"); }

long long ListDataImpl::longlongValue() const {
    detail::throwWrongKind("not a long long integer value");
}

double ListDataImpl::doubleValue() const { detail::throwWrongKind("not a double value"); }

CString const & ListDataImpl::asString() const { detail::throwWrongKind("not a string field"); }

ListData & ListDataImpl::asList() { return *this; }

ListData const & ListDataImpl::asList() const { return *this; }

RecordData & ListDataImpl::asRecord() { detail::throwWrongKind("not a record field"); }

RecordData const & ListDataImpl::asRecord() const { detail::throwWrongKind("not a record field"); }

RawData & ListDataImpl::asRawData() { detail::throwWrongKind("not a raw data field"); }

RawData const & ListDataImpl::asRawData() const { detail::throwWrongKind("not a raw data field"); }

CString ListDataImpl::toString() const { return CString(); }

CString const & ListDataImpl::getElementTypeName() const { return elementTypeName_; }

void ListDataImpl::setElementTypeName(CString const & name) { elementTypeName_ = name; }

unsigned int ListDataImpl::getCount() const { return static_cast<unsigned int>(elements_.size()); }

RefCountedPtr<FieldValue> ListDataImpl::getElement(unsigned int index) const {
    return elements_[index];
}

void ListDataImpl::setElement(unsigned int index, RefCountedPtr<FieldValue> const & value) {
    elements_[index] = value;
}

void ListDataImpl::removeElement(unsigned int index) {
    elements_.erase(elements_.begin() + static_cast<std::ptrdiff_t>(index));
}

void ListDataImpl::removeAllElements() { elements_.clear(); }

void ListDataImpl::addElement(RefCountedPtr<FieldValue> const & value) {
    detail::requirePlaces(elements_.size() + 1);
    elements_.push_back(value);
}

void ListDataImpl::insertElementAt(unsigned int index, RefCountedPtr<FieldValue> const & value) {
    detail::requirePlaces(elements_.size() + 1);
    elements_.insert(elements_.begin() + static_cast<std::ptrdiff_t>(index), value);
}

void ListDataImpl::appendElementsOf(ListData const & other) {
    unsigned int const count = other.getCount();
    detail::requirePlaces(elements_.size() + count);
    for (unsigned int i = 0; i < count; ++i) {
        elements_.push_back(other.getElement(i));
    }
}

detail::ReadyMade::Value detail::ReadyMade::list(CString const & elementTypeName,
                                                 FieldValue * const * elements, std::size_t count) {
    requirePlaces(count);
    RefCountedPtr<ListDataImpl> list(new ListDataImpl(elementTypeName));
    list->elements_.resize(count);
    std::transform(elements, elements + count, list->elements_.begin(), Value::attached);
    return list;
}

}  // namespace tvk
