#pragma once

#include <utility>

#include "tvk/chart/ChartRealDataRec.h"

namespace tvk {

/// A real-time update that can be made. Lives on the heap and ends through removeRef.
///
/// It has no move operations: where it would be moved it is copied, and the source keeps its bag.
class TVK_API ChartRealDataRecImpl : public ChartRealDataRec {
public:
    ChartRealDataRecImpl() = default;
    ChartRealDataRecImpl(ChartRealDataRecImpl const &) = default;
    ChartRealDataRecImpl & operator=(ChartRealDataRecImpl const &) = default;

    // By field, in the order of storage; the order of the virtual table is the base class's.
    CString getSequenceNum() const override { return fields_.sequenceNum; }
    void setSequenceNum(CString value) override { fields_.sequenceNum = std::move(value); }
    CString getMessageType() const override { return fields_.messageType; }
    void setMessageType(CString value) override { fields_.messageType = std::move(value); }
    CString getSymbolCode() const override { return fields_.bar.symbolCode; }
    void setSymbolCode(CString value) override { fields_.bar.symbolCode = std::move(value); }
    PriceKindEnum getPriceKind() const override { return fields_.bar.priceKind; }
    void setPriceKind(PriceKindEnum kind) override { fields_.bar.priceKind = kind; }
    CString getPeriodType() const override { return fields_.bar.periodType; }
    void setPeriodType(CString value) override { fields_.bar.periodType = std::move(value); }
    CString getDataDate() const override { return fields_.bar.dataDate; }
    void setDataDate(CString value) override { fields_.bar.dataDate = std::move(value); }
    CString getDataTime() const override { return fields_.bar.dataTime; }
    void setDataTime(CString value) override { fields_.bar.dataTime = std::move(value); }
    CString getOpenPrice() const override { return fields_.bar.openPrice; }
    void setOpenPrice(CString value) override { fields_.bar.openPrice = std::move(value); }
    CString getClosePrice() const override { return fields_.bar.closePrice; }
    void setClosePrice(CString value) override { fields_.bar.closePrice = std::move(value); }
    CString getHighPrice() const override { return fields_.bar.highPrice; }
    void setHighPrice(CString value) override { fields_.bar.highPrice = std::move(value); }
    CString getLowPrice() const override { return fields_.bar.lowPrice; }
    void setLowPrice(CString value) override { fields_.bar.lowPrice = std::move(value); }
    CString getAsk() const override { return fields_.bar.ask; }
    void setAsk(CString value) override { fields_.bar.ask = std::move(value); }
    CString getAskVolume() const override { return fields_.bar.askVolume; }
    void setAskVolume(CString value) override { fields_.bar.askVolume = std::move(value); }
    CString getBid() const override { return fields_.bar.bid; }
    void setBid(CString value) override { fields_.bar.bid = std::move(value); }
    CString getBidVolume() const override { return fields_.bar.bidVolume; }
    void setBidVolume(CString value) override { fields_.bar.bidVolume = std::move(value); }
    CString getVolume() const override { return fields_.bar.volume; }
    void setVolume(CString value) override { fields_.bar.volume = std::move(value); }
    CString getCurrVolume() const override { return fields_.bar.currVolume; }
    void setCurrVolume(CString value) override { fields_.bar.currVolume = std::move(value); }
    CString getTradeDate() const override { return fields_.tradeDate; }
    void setTradeDate(CString value) override { fields_.tradeDate = std::move(value); }
    CString getField(CString name) const override { return fields_.getField(name); }
    void setField(CString name, CString value) override { fields_.setField(name, value); }
    bool hasField(CString name) const override { return fields_.hasField(name); }

private:
    ~ChartRealDataRecImpl() override;
};

}  // namespace tvk
