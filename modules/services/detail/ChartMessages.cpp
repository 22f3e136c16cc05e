#include "modules/services/detail/ChartMessages.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

#include "modules/services/detail/Messages.h"
#include "tvk/chart/ChartHistoricalDataRecImpl.h"
#include "tvk/chart/ChartRealDataRecImpl.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/text/StringUtil.h"
#include "tvk/values/ListData.h"
#include "tvk/values/NumberData.h"

namespace tvk::services {

namespace {

constexpr char PERIODS_REQUEST[] = "chartPeriods";
constexpr char HISTORY_REQUEST[] = "chartHistory";

// What a notice has beside the fields of a bar.
constexpr char const * FRAME_FIELDS[] = {"symbol", "priceKind", "periodType", "reset"};

template <class Record>
struct BarField {
    char const * name;
    void (Record::*set)(CString);
};

/// Those without which a bar is none.
template <class Record>
constexpr std::array<BarField<Record>, 7> REQUIRED_FIELDS = {{
    {"date", &Record::setDataDate},
    {"time", &Record::setDataTime},
    {"open", &Record::setOpenPrice},
    {"high", &Record::setHighPrice},
    {"low", &Record::setLowPrice},
    {"close", &Record::setClosePrice},
    {"volume", &Record::setVolume},
}};

template <class Record>
constexpr std::array<BarField<Record>, 5> OPTIONAL_FIELDS = {{
    {"ask", &Record::setAsk},
    {"askVolume", &Record::setAskVolume},
    {"bid", &Record::setBid},
    {"bidVolume", &Record::setBidVolume},
    {"currVolume", &Record::setCurrVolume},
}};

/// What one of the two records has and the other has not.
template <class Record>
constexpr std::array<BarField<Record>, 0> FIELDS_OF_ITS_OWN = {};
template <>
constexpr std::array<BarField<ChartHistoricalDataRec>, 1>
    FIELDS_OF_ITS_OWN<ChartHistoricalDataRec> = {{
        {"bidAskVolume", &ChartHistoricalDataRec::setBidAskVolume},
    }};
template <>
constexpr std::array<BarField<ChartRealDataRec>, 2> FIELDS_OF_ITS_OWN<ChartRealDataRec> = {{
    {"sequenceNum", &ChartRealDataRec::setSequenceNum},
    {"tradeDate", &ChartRealDataRec::setTradeDate},
}};

template <class Record, std::size_t count>
BarField<Record> const * fieldNamed(std::array<BarField<Record>, count> const & fields,
                                    CString const & name) {
    auto const found =
        std::find_if(fields.begin(), fields.end(),
                     [&](BarField<Record> const & field) { return name == field.name; });
    return found == fields.end() ? nullptr : &*found;
}

template <class Record>
BarField<Record> const * optionalFieldNamed(CString const & name) {
    BarField<Record> const * const field = fieldNamed(OPTIONAL_FIELDS<Record>, name);
    return field != nullptr ? field : fieldNamed(FIELDS_OF_ITS_OWN<Record>, name);
}

bool isFrameField(CString const & name) {
    return std::any_of(std::begin(FRAME_FIELDS), std::end(FRAME_FIELDS),
                       [&](char const * field) { return name == field; });
}

/// Copies the fields of a bar into the record. What the record has no place for goes into its bag,
/// where it is a text or a number. `place` leads to the bar in the message, for errors.
template <class Record, class Place>
bool readBar(MessageReader const & reader, RecordData const & bar, Place const & place,
             Record & record) {
    for (BarField<Record> const & field : REQUIRED_FIELDS<Record>) {
        RefCountedPtr<FieldValue> const value = bar.getFieldValue(field.name);
        if (value.isNull()) {
            return reader.refuse(place() + field.name, "is missing");
        }
        if (!isScalar(value.get())) {
            return reader.refuse(place() + field.name, "is no text or number");
        }
        (record.*field.set)(value->asString());
    }
    for (RecordData::Field const & each : bar.getAllFields()) {
        CString const & name = *each.name;
        if (fieldNamed(REQUIRED_FIELDS<Record>, name) != nullptr || !isScalar(each.value)) {
            continue;
        }
        BarField<Record> const * const field = optionalFieldNamed<Record>(name);
        if (field != nullptr) {
            (record.*field->set)(each.value->asString());
        } else if (!isFrameField(name)) {
            record.setField(name, each.value->asString());
        }
    }
    return true;
}

template <class Record>
void setChart(ChartKey const & chart, Record & record) {
    record.setSymbolCode(chart.symbolCode);
    record.setPriceKind(chart.priceKind);
    record.setPeriodType(chart.periodType);
}

bool readPriceKind(MessageReader const & reader, PriceKindEnum * kind) {
    double number = 0;
    if (!reader.readNumber("priceKind", &number)) {
        return false;
    }
    // Any 32-bit integer: back ends have kinds of their own.
    if (!(number >= -2147483648.0 && number <= 2147483647.0) ||
        number != static_cast<double>(static_cast<int>(number))) {
        return reader.refuse("priceKind", "is no price kind");
    }
    *kind = static_cast<PriceKindEnum>(static_cast<int>(number));
    return true;
}

bool readChart(MessageReader const & reader, ChartKey * chart) {
    return reader.readText("symbol", &chart->symbolCode) &&
           readPriceKind(reader, &chart->priceKind) &&
           reader.readText("periodType", &chart->periodType);
}

/// Whether the reply is about the chart that was asked for.
bool isChart(MessageReader const & reader, ChartKey const & asked) {
    constexpr char COMPLAINT[] = "is not that of the request";
    ChartKey chart;
    if (!readChart(reader, &chart)) {
        return false;
    }
    int const code = KestrinConstants::ERR_UnexpectedReplyMessage;
    return (chart.symbolCode == asked.symbolCode || reader.refuse(code, "symbol", COMPLAINT)) &&
           (chart.priceKind == asked.priceKind || reader.refuse(code, "priceKind", COMPLAINT)) &&
           (chart.periodType == asked.periodType || reader.refuse(code, "periodType", COMPLAINT));
}

CString placeIn(char const * list, unsigned int index) {
    return CString(list) + "[" + StringUtil::toString(index) + "]";
}

RefCountedPtr<KestrinMessage> historyRequestFor(ChartKey const & chart) {
    RefCountedPtr<KestrinMessage> request = requestOfType(HISTORY_REQUEST);
    request->setFieldValue("symbol", chart.symbolCode);
    request->setFieldValue("priceKind", new NumberData(static_cast<int>(chart.priceKind)));
    request->setFieldValue("periodType", chart.periodType);
    return request;
}

}  // namespace

bool ChartKey::operator<(ChartKey const & other) const {
    if (int const order = symbolCode.Compare(other.symbolCode)) {
        return order < 0;
    }
    if (priceKind != other.priceKind) {
        return priceKind < other.priceKind;
    }
    return periodType.Compare(other.periodType) < 0;
}

CString subjectOf(ChartKey const & chart) {
    return chart.symbolCode + "/" + StringUtil::toString(static_cast<int>(chart.priceKind)) + "/" +
           chart.periodType;
}

RefCountedPtr<KestrinMessage> periodsRequest() { return requestOfType(PERIODS_REQUEST); }

RefCountedPtr<KestrinMessage> historyRequest(ChartKey const & chart, unsigned int count) {
    RefCountedPtr<KestrinMessage> request = historyRequestFor(chart);
    request->setFieldValue("count", new NumberData(static_cast<long long>(count)));
    return request;
}

RefCountedPtr<KestrinMessage> historyRequest(ChartKey const & chart, CString const & fromDate,
                                             CString const & toDate) {
    RefCountedPtr<KestrinMessage> request = historyRequestFor(chart);
    request->setFieldValue("from", fromDate);
    request->setFieldValue("to", toDate);
    return request;
}

bool readPeriods(KestrinMessage const & reply, int componentCode, std::vector<CString> * periods,
                 ErrorInfo * error) {
    constexpr char PERIODS[] = "periods";
    MessageReader const reader(reply, componentCode, KestrinConstants::ERR_InvalidMessageData,
                               error);
    ListData const * list = nullptr;
    if (!reader.readList(PERIODS, &list)) {
        return false;
    }
    periods->clear();
    for (unsigned int index = 0; index < list->getCount(); ++index) {
        RefCountedPtr<FieldValue> const period = list->getElement(index);
        if (!isScalar(period.get())) {
            return reader.refuse(placeIn(PERIODS, index), "is no text or number");
        }
        periods->push_back(period->asString());
    }
    return true;
}

bool readHistory(KestrinMessage const & reply, int componentCode, ChartKey const & asked,
                 std::vector<RefCountedPtr<ChartHistoricalDataRec>> * records, ErrorInfo * error) {
    constexpr char BARS[] = "bars";
    MessageReader const reader(reply, componentCode, KestrinConstants::ERR_InvalidMessageData,
                               error);
    ListData const * bars = nullptr;
    if (!isChart(reader, asked) || !reader.readList(BARS, &bars)) {
        return false;
    }
    records->clear();
    records->reserve(bars->getCount());
    for (unsigned int index = 0; index < bars->getCount(); ++index) {
        RefCountedPtr<FieldValue> const bar = bars->getElement(index);
        if (bar.isNull() || bar->getFieldType() != FLDTYPE_RECORD) {
            return reader.refuse(placeIn(BARS, index), "is no record");
        }
        RefCountedPtr<ChartHistoricalDataRec> const record(new ChartHistoricalDataRecImpl);
        setChart(asked, *record);
        auto const place = [&] { return placeIn(BARS, index) + "/"; };
        if (!readBar(reader, bar->asRecord(), place, *record)) {
            return false;
        }
        records->push_back(record);
    }
    return true;
}

bool readUpdate(KestrinMessage const & notice, int componentCode, ChartUpdate * update,
                ErrorInfo * error) {
    MessageReader const reader(notice, componentCode, KestrinConstants::ERR_InvalidMessageData,
                               error);
    double reset = 0;
    if (!reader.readOptionalNumber("reset", &reset)) {
        return false;
    }
    update->isReset = reset != 0;
    if (update->isReset) {
        return reader.readText("symbol", &update->chart.symbolCode);
    }
    if (!readChart(reader, &update->chart)) {
        return false;
    }
    update->record = new ChartRealDataRecImpl;
    setChart(update->chart, *update->record);
    update->record->setMessageType(notice.header().getMessageTypeId());
    return readBar(
        reader, notice, [] { return CString(); }, *update->record);
}

}  // namespace tvk::services
