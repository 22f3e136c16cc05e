#include "tvk/chart/ChartHistoricalDataRecImpl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>

#include "tests/chart/ChartRecordDoubles.h"
#include "tests/chart/ChartRecordSuite.h"
#include "tests/support/VirtualOrder.h"

namespace tvk {
namespace {

using test::slotOf;

struct HistoricalRecords {
    using Record = ChartHistoricalDataRec;
    using Impl = ChartHistoricalDataRecImpl;
    using Own = test::OwnHistoricalDataRec;

    static std::vector<test::TextField<Record>> const & texts() {
        static std::vector<test::TextField<Record>> const fields = [] {
            auto texts = test::textsOfBar<Record>();
            texts.push_back({"bidAskVolume", &Record::getBidAskVolume, &Record::setBidAskVolume});
            return texts;
        }();
        return fields;
    }
};

// The text getters are all of one type, or texts() would not compile.
TEST(ChartHistoricalDataRec, DeliberateNoGetterIsConst) {
    using Record = ChartHistoricalDataRec;
    EXPECT_TRUE((std::is_same_v<decltype(&Record::getSymbolCode), CString (Record::*)()>));
    EXPECT_TRUE((std::is_same_v<decltype(&Record::getPriceKind), PriceKindEnum (Record::*)()>));
    EXPECT_TRUE((std::is_same_v<decltype(&Record::getField), CString (Record::*)(CString)>));
    EXPECT_TRUE((std::is_same_v<decltype(&Record::hasField), bool (Record::*)(CString)>));
}

TEST(ChartHistoricalDataRec, FieldsStandInTheirOrder) {
    auto const places = test::OwnHistoricalDataRec().placesOfFields();
    EXPECT_EQ(places.size(), HistoricalRecords::texts().size() + 1);
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
                                 {"getOpenPrice", slotOf(&Class::getOpenPrice)},
                                 {"getPeriodType", slotOf(&Class::getPeriodType)},
                                 {"getPriceKind", slotOf(&Class::getPriceKind)},
                                 {"getSymbolCode", slotOf(&Class::getSymbolCode)},
                                 {"getVolume", slotOf(&Class::getVolume)},
                                 {"getAsk", slotOf(&Class::getAsk)},
                                 {"getAskVolume", slotOf(&Class::getAskVolume)},
                                 {"getBid", slotOf(&Class::getBid)},
                                 {"getBidVolume", slotOf(&Class::getBidVolume)},
                                 {"getBidAskVolume", slotOf(&Class::getBidAskVolume)},
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
                                 {"setBidAskVolume", slotOf(&Class::setBidAskVolume)},
                                 {"setField", slotOf(&Class::setField)},
                                 {"hasField", slotOf(&Class::hasField)}});
}

TEST(ChartHistoricalDataRecOrder, StandsBehindThatOfRefCounted) {
    expectOrder<ChartHistoricalDataRec>();
    expectOrder<ChartHistoricalDataRecImpl>();
}

class OneMore : public ChartHistoricalDataRec {
public:
    virtual void oneMore() {}
};

TEST(ChartHistoricalDataRecOrder, EndsWithHasField) { EXPECT_EQ(slotOf(&OneMore::oneMore), 38u); }

}  // namespace

namespace test {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(ChartHistoricalDataRec, ChartRecord, HistoricalRecords);

}  // namespace
}  // namespace test
}  // namespace tvk
