#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "examples/catalogue/Labels.h"
#include "examples/catalogue/Loader.h"
#include "tests/support/PrintCString.h"
#include "tvk/agent/KestrinUtil.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/StringData.h"

namespace tvk::test {

namespace {

using testing::HasSubstr;

constexpr std::string_view DEFINITIONS = R"({
    "types": [
        {"name": "Code", "form": "simple", "nameJa": "T"},
        {"name": "Level", "form": "record", "nameJa": "T", "fields": [
            {"name": "p", "nameJa": "F", "type": "boolean"},
            {"name": "\u6570", "nameJa": "F", "type": "Code"}]},
        {"name": "Levels", "form": "list", "nameJa": "T", "elementType": "Level"},
        {"name": "Rows", "form": "list", "nameJa": "T", "elementType": "Row"},
        {"name": "Row", "form": "list", "nameJa": "T", "elementType": "Code"}],
    "messages": [
        {"name": "All", "id": "all", "nameJa": "A", "fields": [
            {"name": "text", "nameJa": "F", "type": "string", "maxSize": 4},
            {"name": "int", "nameJa": "F", "type": "integer"},
            {"name": "dec", "nameJa": "F", "type": "decimal"},
            {"name": "bool", "nameJa": "F", "type": "boolean"},
            {"name": "code", "nameJa": "F", "type": "Code", "maxSize": 4},
            {"name": "level", "nameJa": "F", "type": "Level"},
            {"name": "levels", "nameJa": "F", "type": "Levels"},
            {"name": "rows", "nameJa": "F", "type": "Rows"}]}]})";

class CatalogueLabels : public testing::Test {
protected:
    void SetUp() override { ASSERT_FALSE(catalogue_.isNull()); }

    RefCountedPtr<KestrinMessage> read(std::string_view json) {
        return parser_.parseJsonMessage(json.data(), static_cast<unsigned int>(json.size()), 0,
                                        nullptr);
    }

    MessageTypeDef const & all() const { return *catalogue_->getMessageDefByName("All"); }

    /// The rows, without headings, and with a bar for the room between two cells.
    std::string rowsOf(RecordData const & message) const {
        std::string const table = labelled(all(), message);
        std::size_t const headings = table.find('\n', table.find('\n') + 1) + 1;
        std::string rows;
        for (std::size_t at = headings, end = 0; at < table.size(); at = end) {
            end = std::min(table.find("  ", at), table.size());
            rows.append(table, at, end - at);
            if (end < table.size()) {
                end = table.find_first_not_of(' ', end);
                rows += '|';
            }
        }
        return rows;
    }
    std::string rowsOf(std::string_view json) { return rowsOf(*read(json)); }

    RefCountedPtr<MessageDefManager> const catalogue_ = loadCatalogue(DEFINITIONS).registry;

private:
    SimpleObjectCache cache_{SimpleObjectCache::defaultRawDataConverter()};
    JsonMessageParser parser_{&cache_};
};

}  // namespace

TEST_F(CatalogueLabels, FindsTheDefinitionByTheFieldType) {
    EXPECT_EQ(definitionOf(*catalogue_, *read(R"({"type":"all"})")), &all());
    EXPECT_EQ(definitionOf(*catalogue_, *read(R"({"type":"All"})")), nullptr);
    EXPECT_EQ(definitionOf(*catalogue_, *read(R"({"type":1})")), nullptr);
    EXPECT_EQ(definitionOf(*catalogue_, *read(R"({"type":["all"]})")), nullptr);
    EXPECT_EQ(definitionOf(*catalogue_, *read(R"({})")), nullptr);
}

TEST_F(CatalogueLabels, GivesFieldsInTheOrderOfTheDefinition) {
    EXPECT_EQ(rowsOf(R"({"bool":true,"code":"x","dec":1.50,"int":-7,"text":"\u3042\u3044"})"),
              "text|F|string|\xE6\x96\x87\xE5\xAD\x97\xE5\x88\x97|\xE3\x81\x82\xE3\x81\x84\n"
              "int|F|integer|\xE6\x95\xB4\xE6\x95\xB0|-7\n"
              "dec|F|decimal|10\xE9\x80\xB2\xE5\x88\xB6\xE6\x95\xB0|1.50\n"
              "bool|F|boolean|Boolean|true\n"
              "code|F|Code|T|x\n");
}

TEST_F(CatalogueLabels, EntersRecordsAndLists) {
    EXPECT_EQ(rowsOf(R"({"levels":[{"p":true,"\u6570":2},{}],"level":{"p":false},)"
                     R"("rows":[["x"],[]]})"),
              "level|F|Level|T|record of 1\n"
              "level/p|F|boolean|Boolean|false\n"
              "levels|F|Levels|T|list of 2\n"
              "levels[0]|[0]|Level|T|record of 2\n"
              "levels[0]/p|F|boolean|Boolean|true\n"
              "levels[0]/\xE6\x95\xB0|F|Code|T|2\n"
              "levels[1]|[1]|Level|T|record of 0\n"
              "rows|F|Rows|T|list of 2\n"
              "rows[0]|[0]|Row|T|list of 1\n"
              "rows[0][0]|[0]|Code|T|x\n"
              "rows[1]|[1]|Row|T|list of 0\n");
}

TEST_F(CatalogueLabels, NamesThePathThatLeadsToAValue) {
    RefCountedPtr<KestrinMessage> const message =
        read(R"({"levels":[{},{"p":true}],"level":{"p":false},"text":"x","rows":[["a"],["b"]]})");
    std::string const rows = rowsOf(*message);
    for (char const * const path : {"text", "level", "level/p", "levels", "levels[0]", "levels[1]",
                                    "levels[1]/p", "rows", "rows[1]"}) {
        SCOPED_TRACE(path);
        EXPECT_THAT("\n" + rows, HasSubstr(std::string("\n").append(path).append("|")));
        EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*message, path));
    }
    // An element of a list in a list is beyond such a path.
    EXPECT_THAT(rows, HasSubstr("\nrows[1][0]|[0]|Code|T|b\n"));
}

TEST_F(CatalogueLabels, RemarksOnValuesThatDoNotFit) {
    struct Row {
        char const * json;
        char const * remark;  ///< empty for none
    };
    constexpr Row ROWS[] = {
        {R"({"text":"abcd"})", ""},
        {R"({"text":"abcde"})", "longer than 4 bytes"},
        {R"({"text":"\u3042\u3044"})", ""},  // two bytes each in the code page
        {R"({"text":"\u3042\u3044a"})", "longer than 4 bytes"},
        {R"({"text":1})", "a string is expected"},
        {R"({"text":true})", "a string is expected"},
        {R"({"text":[]})", "a string is expected"},
        {R"({"int":1})", ""},
        {R"({"int":1.0})", "an integer is expected"},
        {R"({"int":false})", "an integer is expected"},
        {R"({"int":"1"})", "an integer is expected"},
        {R"({"int":{}})", "an integer is expected"},
        {R"({"dec":1})", ""},
        {R"({"dec":1e3})", ""},
        {R"({"dec":true})", "a number is expected"},
        {R"({"dec":"1"})", "a number is expected"},
        {R"({"bool":false})", ""},
        {R"({"bool":0})", "a boolean is expected"},
        {R"({"bool":"true"})", "a boolean is expected"},
        {R"({"code":"7203"})", ""},
        {R"({"code":"72033"})", "longer than 4 bytes"},
        {R"({"code":72033})", ""},
        {R"({"code":[]})", "a single value is expected"},
        {R"({"code":{}})", "a single value is expected"},
        {R"({"level":{}})", ""},
        {R"({"level":[]})", "a record is expected"},
        {R"({"level":1})", "a record is expected"},
        {R"({"levels":[]})", ""},
        {R"({"levels":{"p":1}})", "a list is expected"},
        {R"({"levels":[1]})", "a record is expected"},
        {R"({"rows":[[[]]]})", "a single value is expected"},
        {R"({"levels":[{"p":0}]})", "a boolean is expected"},
        {R"({"other":1})", "not in the catalogue"},
        {R"({"level":{"other":1}})", "not in the catalogue"},
        {R"({"Text":"x"})", "not in the catalogue"},
        {R"({"other":null})", ""},
    };
    for (Row const & row : ROWS) {
        SCOPED_TRACE(row.json);
        std::string const table = labelled(all(), *read(row.json));
        bool const hasRemark = table.find("Remark") != std::string::npos;
        EXPECT_EQ(hasRemark, *row.remark != '\0');
        EXPECT_THAT(table, HasSubstr(row.remark));
    }
}

TEST_F(CatalogueLabels, DoesNotEnterWhatIsNotDefined) {
    std::string deep;
    for (int i = 0; i < 100'000; ++i) {
        deep += R"({"a":)";
    }
    deep += "1" + std::string(100'000, '}');
    EXPECT_EQ(rowsOf(deep), "a|record of 1|not in the catalogue\n");
    EXPECT_EQ(rowsOf(R"({"levels":{"p":{"p":1}},"level":[{"p":1}]})"),
              "level|F|Level|T|list of 1|a record is expected\n"
              "levels|F|Levels|T|record of 1|a list is expected\n");
}

TEST_F(CatalogueLabels, ShowsNamesAndTextsSafely) {
    EXPECT_EQ(rowsOf(R"({"a\u001b\u3042":"b\u001b\u3042"})"),
              "a\\x1B\xE3\x81\x82|b\\x1B\xE3\x81\x82|not in the catalogue\n");
}

TEST_F(CatalogueLabels, PassesOverNullReferences) {
    RefCountedPtr<KestrinMessage> const message = read("{}");
    RefCountedPtr<ListDataImpl> const list(new ListDataImpl("Level"));
    list->addElement(nullptr);
    message->setFieldValue("levels", RefCountedPtr<FieldValue>(list));
    message->setFieldValue("text", RefCountedPtr<FieldValue>());
    message->setFieldValue("other", RefCountedPtr<FieldValue>());
    EXPECT_EQ(rowsOf(*message), "levels|F|Levels|T|list of 1\n");
}

}  // namespace tvk::test
