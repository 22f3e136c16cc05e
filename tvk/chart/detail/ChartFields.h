#pragma once

#include <map>

#include "tvk/chart/PriceKindEnum.h"
#include "tvk/platform/CString.h"

namespace tvk::detail {

/// What both records say of a bar, in the order of storage.
struct ChartBar {
    CString symbolCode;
    PriceKindEnum priceKind = PRICEKIND_NONE;
    CString periodType;
    CString dataDate;
    CString dataTime;
    CString openPrice;
    CString closePrice;
    CString highPrice;
    CString lowPrice;
    CString ask;
    CString askVolume;
    CString bid;
    CString bidVolume;
    CString volume;
    CString currVolume;
};

/// All that a record stores: its fixed fields and, behind them, the bag of named texts. Nothing
/// connects the two.
///
/// The rules of copying and moving stand here, for both records. A copy has a bag of its own.
///
/// Deliberate: a move takes the bag alone and leaves the source an empty one; the fixed fields are
/// copied, so that a record that was moved from still says which bar it was.
template <class Fixed>
class ChartFields : public Fixed {
public:
    ChartFields() = default;
    ChartFields(ChartFields const &) = default;
    ChartFields(ChartFields && other) noexcept : Fixed(other) { bag_.swap(other.bag_); }
    ~ChartFields() = default;

    ChartFields & operator=(ChartFields const &) = default;
    ChartFields & operator=(ChartFields && other) noexcept {
        if (this != &other) {
            Fixed::operator=(other);
            bag_.clear();
            bag_.swap(other.bag_);
        }
        return *this;
    }

    /// Empty for an absent name, which stays absent; hasField tells that from an empty text.
    CString getField(CString const & name) const {
        auto const found = bag_.find(name);
        return found == bag_.end() ? CString() : found->second;
    }
    void setField(CString const & name, CString const & value) {
        bag_.insert_or_assign(name, value);
    }
    bool hasField(CString const & name) const { return bag_.count(name) != 0; }

private:
    std::map<CString, CString> bag_;  // names match and are ordered by all their bytes, unsigned
};

}  // namespace tvk::detail
