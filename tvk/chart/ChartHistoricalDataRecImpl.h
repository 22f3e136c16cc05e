#pragma once

#include <utility>

#include "tvk/chart/ChartHistoricalDataRec.h"

namespace tvk {

/// A bar of the history that can be made. Lives on the heap and ends through removeRef.
///
/// It has no move operations: where it would be moved it is copied, and the source keeps its bag.
class TVK_API ChartHistoricalDataRecImpl : public ChartHistoricalDataRec {
public:
    ChartHistoricalDataRecImpl() = default;
    ChartHistoricalDataRecImpl(ChartHistoricalDataRecImpl const &) = default;
    ChartHistoricalDataRecImpl & operator=(ChartHistoricalDataRecImpl const &) = default;

    // By field, in the order of storage; the order of the virtual table is the base class's.
    CString getSymbolCode() override { return fields_.bar.symbolCode; }
    void setSymbolCode(CString value) override { fields_.bar.symbolCode = std::move(value); }
    PriceKindEnum getPriceKind() override { return fields_.bar.priceKind; }
    void setPriceKind(PriceKindEnum kind) override { fields_.bar.priceKind = kind; }
    CString getPeriodType() override { return fields_.bar.periodType; }
    void setPeriodType(CString value) override { fields_.bar.periodType = std::move(value); }
    CString getDataDate() override { return fields_.bar.dataDate; }
    void setDataDate(CString value) override { fields_.bar.dataDate = std::move(value); }
    CString getDataTime() override { return fields_.bar.dataTime; }
    void setDataTime(CString value) override { fields_.bar.dataTime = std::move(value); }
    CString getOpenPrice() override { return fields_.bar.openPrice; }
    void setOpenPrice(CString value) override { fields_.bar.openPrice = std::move(value); }
    CString getClosePrice() override { return fields_.bar.closePrice; }
    void setClosePrice(CString value) override { fields_.bar.closePrice = std::move(value); }
    CString getHighPrice() override { return fields_.bar.highPrice; }
    void setHighPrice(CString value) override { fields_.bar.highPrice = std::move(value); }
    CString getLowPrice() override { return fields_.bar.lowPrice; }
    void setLowPrice(CString value) override { fields_.bar.lowPrice = std::move(value); }
    CString getAsk() override { return fields_.bar.ask; }
    void setAsk(CString value) override { fields_.bar.ask = std::move(value); }
    CString getAskVolume() override { return fields_.bar.askVolume; }
    void setAskVolume(CString value) override { fields_.bar.askVolume = std::move(value); }
    CString getBid() override { return fields_.bar.bid; }
    void setBid(CString value) override { fields_.bar.bid = std::move(value); }
    CString getBidVolume() override { return fields_.bar.bidVolume; }
    void setBidVolume(CString value) override { fields_.bar.bidVolume = std::move(value); }
    CString getVolume() override { return fields_.bar.volume; }
    void setVolume(CString value) override { fields_.bar.volume = std::move(value); }
    CString getCurrVolume() override { return fields_.bar.currVolume; }
    void setCurrVolume(CString value) override { fields_.bar.currVolume = std::move(value); }
    CString getBidAskVolume() override { return fields_.bidAskVolume; }
    void setBidAskVolume(CString value) override { fields_.bidAskVolume = std::move(value); }
    CString getField(CString name) override { return fields_.getField(name); }
    void setField(CString name, CString value) override { fields_.setField(name, value); }
    bool hasField(CString name) override { return fields_.hasField(name); }

private:
    ~ChartHistoricalDataRecImpl() override;
};

}  // namespace tvk
