#pragma once

#include "tvk/chart/PriceKindEnum.h"
#include "tvk/chart/detail/ChartFields.h"
#include "tvk/platform/CString.h"
#include "tvk/values/RefCounted.h"

namespace tvk {

/// One real-time update of a chart's bar.
///
/// Content, ownership, moving, threads and failure are those of ChartHistoricalDataRec.
class TVK_API ChartRealDataRec : public RefCounted {
public:
    ChartRealDataRec() = default;
    ChartRealDataRec(ChartRealDataRec const &) = default;
    ChartRealDataRec(ChartRealDataRec &&) = default;
    ChartRealDataRec & operator=(ChartRealDataRec const &) = default;
    ChartRealDataRec & operator=(ChartRealDataRec &&) = default;
    ~ChartRealDataRec() override;

    virtual CString getClosePrice() const = 0;
    virtual CString getCurrVolume() const = 0;
    virtual CString getDataDate() const = 0;
    virtual CString getDataTime() const = 0;
    /// Empty for an absent name, which stays absent; hasField tells that from an empty text.
    virtual CString getField(CString name) const = 0;
    virtual CString getHighPrice() const = 0;
    virtual CString getLowPrice() const = 0;
    virtual CString getMessageType() const = 0;
    virtual CString getOpenPrice() const = 0;
    virtual CString getPeriodType() const = 0;
    virtual PriceKindEnum getPriceKind() const = 0;
    virtual CString getSequenceNum() const = 0;
    virtual CString getSymbolCode() const = 0;
    virtual CString getVolume() const = 0;
    virtual CString getAsk() const = 0;
    virtual CString getAskVolume() const = 0;
    virtual CString getBid() const = 0;
    virtual CString getBidVolume() const = 0;
    /// Only for a name that setField stored.
    virtual bool hasField(CString name) const = 0;
    virtual void setSequenceNum(CString value) = 0;
    virtual void setMessageType(CString value) = 0;
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
    /// Adds the name, or replaces its text. An empty text counts as one.
    virtual void setField(CString name, CString value) = 0;
    virtual CString getTradeDate() const = 0;
    virtual void setTradeDate(CString value) = 0;

protected:
    /// The fixed fields, in the order of storage.
    struct Fixed {
        CString sequenceNum;
        CString messageType;
        detail::ChartBar bar;
        CString tradeDate;
    };

    detail::ChartFields<Fixed> fields_;
};

}  // namespace tvk
