#pragma once

#include "tvk/chart/PriceKindEnum.h"
#include "tvk/chart/detail/ChartFields.h"
#include "tvk/platform/CString.h"
#include "tvk/values/RefCounted.h"

namespace tvk {

/// One finished bar of a chart's history.
///
/// Content:   fixed fields and a bag of further texts under names. The two are separate stores: a
///            fixed field is not in the bag, also under its own name. Prices, volumes, dates and
///            times are texts as they arrived; nothing reads or checks them. All texts are empty and
///            the price kind is PRICEKIND_NONE until they are set.
/// Ownership: counted. Both assignments take over the count of their source, see RefCounted: assign
///            only where both counts are the same, or hold the target in a way that survives it.
/// Moving:    takes the bag and leaves the source an empty one; the source keeps its fixed fields.
/// Threads:   none is guarded.
/// Failure:   nothing is reported but std::bad_alloc.
class TVK_API ChartHistoricalDataRec : public RefCounted {
public:
    ChartHistoricalDataRec() = default;
    ChartHistoricalDataRec(ChartHistoricalDataRec const &) = default;
    ChartHistoricalDataRec(ChartHistoricalDataRec &&) = default;
    ChartHistoricalDataRec & operator=(ChartHistoricalDataRec const &) = default;
    ChartHistoricalDataRec & operator=(ChartHistoricalDataRec &&) = default;
    ~ChartHistoricalDataRec() override;

    // Deliberate: no getter of this record is const, while those of ChartRealDataRec are. Modules
    // that derive override exactly these signatures.
    virtual CString getClosePrice() = 0;
    virtual CString getCurrVolume() = 0;
    virtual CString getDataDate() = 0;
    virtual CString getDataTime() = 0;
    /// Empty for an absent name, which stays absent; hasField tells that from an empty text.
    virtual CString getField(CString name) = 0;
    virtual CString getHighPrice() = 0;
    virtual CString getLowPrice() = 0;
    virtual CString getOpenPrice() = 0;
    virtual CString getPeriodType() = 0;
    virtual PriceKindEnum getPriceKind() = 0;
    virtual CString getSymbolCode() = 0;
    virtual CString getVolume() = 0;
    virtual CString getAsk() = 0;
    virtual CString getAskVolume() = 0;
    virtual CString getBid() = 0;
    virtual CString getBidVolume() = 0;
    virtual CString getBidAskVolume() = 0;
    virtual void setSymbolCode(CString value) = 0;
    virtual void setPriceKind(PriceKindEnum kind) = 0;
    virtual void setPeriodType(CString value) = 0;
    virtual void setDataDate(CString value) = 0;
    virtual void setDataTime(CString value) = 0;
    virtual void setOpenPrice(CString value) = 0;
    virtual void setClosePrice(CString value) = 0;
    virtual void setHighPrice(CString value) = 0;
    virtual void setLowPrice(CString value) = 0;
    virtual void setVolume(CString value) = 0;
    virtual void setCurrVolume(CString value) = 0;
    virtual void setAsk(CString value) = 0;
    virtual void setAskVolume(CString value) = 0;
    virtual void setBid(CString value) = 0;
    virtual void setBidVolume(CString value) = 0;
    virtual void setBidAskVolume(CString value) = 0;
    /// Adds the name, or replaces its text. An empty text counts as one.
    virtual void setField(CString name, CString value) = 0;
    /// Only for a name that setField stored.
    virtual bool hasField(CString name) = 0;

protected:
    /// The fixed fields, in the order of storage.
    struct Fixed {
        detail::ChartBar bar;
        CString bidAskVolume;
    };

    detail::ChartFields<Fixed> fields_;
};

}  // namespace tvk
