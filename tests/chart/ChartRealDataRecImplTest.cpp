#include "tvk/chart/ChartRealDataRecImpl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>

#include "tests/chart/ChartRecordDoubles.h"
#include "tests/chart/ChartRecordSuite.h"
#include "tests/support/VirtualOrder.h"

namespace tvk {
namespace {

using test::slotOf;

struct RealRecords {
    using Record = ChartRealDataRec;
    using Impl = ChartRealDataRecImpl;
    using Own = test::OwnRealDataRec;

    static std::vector<test::TextField<Record>> const & texts() {
        static std::vector<test::TextField<Record>> const fields = [] {
            auto texts = test::textsOfBar<Record>();
            texts.insert(texts.begin(),
                         {{"sequenceNum", &Record::getSequenceNum, &Record::setSequenceNum},
                          {"messageType", &Record::getMessageType, &Record::setMessageType}});
            texts.push_back({"tradeDate", &Record::getTradeDate, &Record::setTradeDate});
            return texts;
        }();
        return fields;
    }
};

// The text getters are all of one type, or texts() would not compile.
TEST(ChartRealDataRec, EveryGetterIsConst) {
    using Record = ChartRealDataRec;
    EXPECT_TRUE((std::is_same_v<decltype(&Record::getSymbolCode), CString (Record::*)() const>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(&Record::getPriceKind), PriceKindEnum (Record::*)() const>));
    EXPECT_TRUE((std::is_same_v<decltype(&Record::getField), CString (Record::*)(CString) const>));
    EXPECT_TRUE((std::is_same_v<decltype(&Record::hasField), bool (Record::*)(CString) const>));
}

TEST(ChartRealDataRec, FieldsStandInTheirOrder) {
    auto const places = test::OwnRealDataRec().placesOfFields();
    EXPECT_EQ(places.size(), RealRecords::texts().size() + 1);
    EXPECT_TRUE(std::is_sorted(places.begin(), places.end()));
}

template <class Class>
void expectOrder() {
    test::expectVirtualOrder(3, {{"getClosePrice", slotOf(&Class::getClosePrice)},
                                 {"getCurrVolume", slotOf(&Class::getCurrVolume)},
                                 {"getDataDate", slotOf(&Class::getDataDate)},
                                 {"getDataTime", slotOf(&Class::getDataTime)},
                                 {"getField", slotOf(&Class::getField)},
                                 {"getHighPrice", slotOf(&Class::getHighPrice)},
                                 {"getLowPrice", slotOf(&Class::getLowPrice)},
                                 {"getMessageType", slotOf(&Class::getMessageType)},
                                 {"getOpenPrice", slotOf(&Class::getOpenPrice)},
                                 {"getPeriodType", slotOf(&Class::getPeriodType)},
                                 {"getPriceKind", slotOf(&Class::getPriceKind)},
                                 {"getSequenceNum", slotOf(&Class::getSequenceNum)},
                                 {"getSymbolCode", slotOf(&Class::getSymbolCode)},
                                 {"getVolume", slotOf(&Class::getVolume)},
                                 {"getAsk", slotOf(&Class::getAsk)},
                                 {"getAskVolume", slotOf(&Class::getAskVolume)},
                                 {"getBid", slotOf(&Class::getBid)},
                                 {"getBidVolume", slotOf(&Class::getBidVolume)},
                                 {"hasField", slotOf(&Class::hasField)},
                                 {"setSequenceNum", slotOf(&Class::setSequenceNum)},
                                 {"setMessageType", slotOf(&Class::setMessageType)},
                                 {"setSymbolCode", slotOf(&Class::setSymbolCode)},
                                 {"setPriceKind", slotOf(&Class::setPriceKind)},
                                 {"setPeriodType", slotOf(&Class::setPeriodType)},
                                 {"setDataDate", slotOf(&Class::setDataDate)},
                                 {"setDataTime", slotOf(&Class::setDataTime)},
                                 {"setOpenPrice", slotOf(&Class::setOpenPrice)},
                                 {"setClosePrice", slotOf(&Class::setClosePrice)},
                                 {"setHighPrice", slotOf(&Class::setHighPrice)},
                                 {"setLowPrice", slotOf(&Class::setLowPrice)},
                                 {"setVolume", slotOf(&Class::setVolume)},
                                 {"setCurrVolume", slotOf(&Class::setCurrVolume)},
                                 {"setAsk", slotOf(&Class::setAsk)},
                                 {"setAskVolume", slotOf(&Class::setAskVolume)},
                                 {"setBid", slotOf(&Class::setBid)},
                                 {"setBidVolume", slotOf(&Class::setBidVolume)},
                                 {"setField", slotOf(&Class::setField)},
                                 {"getTradeDate", slotOf(&Class::getTradeDate)},
                                 {"setTradeDate", slotOf(&Class::setTradeDate)}});
}

TEST(ChartRealDataRecOrder, StandsBehindThatOfRefCounted) {
    expectOrder<ChartRealDataRec>();
    expectOrder<ChartRealDataRecImpl>();
}

class OneMore : public ChartRealDataRec {
public:
    virtual void oneMore() {}
};

TEST(ChartRealDataRecOrder, EndsWithSetTradeDate) { EXPECT_EQ(slotOf(&OneMore::oneMore), 42u); }

}  // namespace

namespace test {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(ChartRealDataRec, ChartRecord, RealRecords);

}  // namespace
}  // namespace test
}  // namespace tvk
