#pragma once

#include <vector>

#include "tvk/chart/ChartHistoricalDataRec.h"
#include "tvk/chart/ChartRealDataRec.h"

/// Records that are not the library's: they hold what the abstract classes store, and may stand
/// anywhere, as their destructors are open. The operations do nothing and answer nothing.
namespace tvk::test {

/// Counts the ends of one object; copies of the object count nowhere.
class EndCounter {
public:
    explicit EndCounter(int * ends) : ends_(ends) {}
    EndCounter(EndCounter const &) {}
    EndCounter & operator=(EndCounter const &) { return *this; }
    ~EndCounter() {
        if (ends_ != nullptr) {
            ++*ends_;
        }
    }

private:
    int * ends_ = nullptr;
};

using Places = std::vector<void const *>;

inline Places placesOf(detail::ChartBar const & bar) {
    return {&bar.symbolCode, &bar.priceKind,  &bar.periodType, &bar.dataDate, &bar.dataTime,
            &bar.openPrice,  &bar.closePrice, &bar.highPrice,  &bar.lowPrice, &bar.ask,
            &bar.askVolume,  &bar.bid,        &bar.bidVolume,  &bar.volume,   &bar.currVolume};
}

/// What is alike for both: all but the getters and the fields of one record alone.
template <class Record>
class OwnRecord : public Record {
public:
    explicit OwnRecord(int * ends = nullptr) : ends_(ends) {}

    void setSymbolCode(CString) override {}
    void setPriceKind(PriceKindEnum) override {}
    void setPeriodType(CString) override {}
    void setDataDate(CString) override {}
    void setDataTime(CString) override {}
    void setOpenPrice(CString) override {}
    void setClosePrice(CString) override {}
    void setHighPrice(CString) override {}
    void setLowPrice(CString) override {}
    void setAsk(CString) override {}
    void setAskVolume(CString) override {}
    void setBid(CString) override {}
    void setBidVolume(CString) override {}
    void setVolume(CString) override {}
    void setCurrVolume(CString) override {}
    void setField(CString, CString) override {}

private:
    EndCounter ends_;
};

class OwnHistoricalDataRec : public OwnRecord<ChartHistoricalDataRec> {
public:
    using OwnRecord::OwnRecord;

    Places placesOfFields() const {
        Places places = placesOf(fields_.bar);
        places.push_back(&fields_.bidAskVolume);
        return places;
    }

    CString getClosePrice() override { return {}; }
    CString getCurrVolume() override { return {}; }
    CString getDataDate() override { return {}; }
    CString getDataTime() override { return {}; }
    CString getField(CString) override { return {}; }
    CString getHighPrice() override { return {}; }
    CString getLowPrice() override { return {}; }
    CString getOpenPrice() override { return {}; }
    CString getPeriodType() override { return {}; }
    PriceKindEnum getPriceKind() override { return {}; }
    CString getSymbolCode() override { return {}; }
    CString getVolume() override { return {}; }
    CString getAsk() override { return {}; }
    CString getAskVolume() override { return {}; }
    CString getBid() override { return {}; }
    CString getBidVolume() override { return {}; }
    CString getBidAskVolume() override { return {}; }
    void setBidAskVolume(CString) override {}
    bool hasField(CString) override { return false; }
};

class OwnRealDataRec : public OwnRecord<ChartRealDataRec> {
public:
    using OwnRecord::OwnRecord;

    Places placesOfFields() const {
        Places places = placesOf(fields_.bar);
        places.insert(places.begin(), {&fields_.sequenceNum, &fields_.messageType});
        places.push_back(&fields_.tradeDate);
        return places;
    }

    CString getClosePrice() const override { return {}; }
    CString getCurrVolume() const override { return {}; }
    CString getDataDate() const override { return {}; }
    CString getDataTime() const override { return {}; }
    CString getField(CString) const override { return {}; }
    CString getHighPrice() const override { return {}; }
    CString getLowPrice() const override { return {}; }
    CString getMessageType() const override { return {}; }
    CString getOpenPrice() const override { return {}; }
    CString getPeriodType() const override { return {}; }
    PriceKindEnum getPriceKind() const override { return {}; }
    CString getSequenceNum() const override { return {}; }
    CString getSymbolCode() const override { return {}; }
    CString getVolume() const override { return {}; }
    CString getAsk() const override { return {}; }
    CString getAskVolume() const override { return {}; }
    CString getBid() const override { return {}; }
    CString getBidVolume() const override { return {}; }
    bool hasField(CString) const override { return false; }
    void setSequenceNum(CString) override {}
    void setMessageType(CString) override {}
    CString getTradeDate() const override { return {}; }
    void setTradeDate(CString) override {}
};

}  // namespace tvk::test
