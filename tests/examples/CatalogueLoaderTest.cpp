#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "examples/catalogue/Loader.h"
#include "examples/catalogue/References.h"
#include "tests/support/PrintCString.h"
#include "tvk/definitions/ListTypeDef.h"
#include "tvk/definitions/RecordTypeDef.h"
#include "tvk/definitions/SimpleTypeDef.h"

namespace tvk::test {

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

/// A prefix and a number.
std::string numbered(char const * prefix, std::size_t number) {
    return std::string(prefix).append(std::to_string(number));
}

std::string simpleType(std::string const & name) {
    return R"({"name":")" + name + R"(","form":"simple","nameJa":"j"})";
}

std::string listType(std::string const & name, std::string const & element) {
    return R"({"name":")" + name + R"(","form":"list","nameJa":"j","elementType":")" + element +
           R"("})";
}

std::string field(std::string const & name, std::string const & type) {
    return R"({"name":")" + name + R"(","nameJa":"j","type":")" + type + R"("})";
}

std::string joined(std::vector<std::string> const & texts) {
    std::string out;
    for (std::string const & text : texts) {
        out += (out.empty() ? "" : ",") + text;
    }
    return out;
}

std::string recordType(std::string const & name, std::vector<std::string> const & fields) {
    return R"({"name":")" + name + R"(","form":"record","nameJa":"j","fields":[)" + joined(fields) +
           "]}";
}

std::string message(std::string const & name, std::string const & id,
                    std::vector<std::string> const & fields) {
    return R"({"name":")" + name + R"(","id":")" + id + R"(","nameJa":"j","fields":[)" +
           joined(fields) + "]}";
}

std::string file(std::vector<std::string> const & types,
                 std::vector<std::string> const & messages = {}) {
    return R"({"types":[)" + joined(types) + R"(],"messages":[)" + joined(messages) + "]}";
}

/// The complaints about a file, which must be refused for them.
std::vector<std::string> complaintsAbout(std::string const & json) {
    LoadedCatalogue const loaded = loadCatalogue(json);
    EXPECT_EQ(loaded.registry.isNull(), !loaded.complaints.empty());
    return loaded.complaints;
}

std::vector<std::string> typeNames(MessageDefManager const & registry) {
    std::vector<std::string> names;
    for (DataTypeDef const * const type : registry.getDataTypeDefList()) {
        names.emplace_back(type->getName());
    }
    return names;
}

}  // namespace

TEST(CatalogueLoader, FillsARegistry) {
    // The Japanese names: a list of quotes, a quote, its quantity and price; a board, its asks.
    LoadedCatalogue const loaded = loadCatalogue(R"({
        "types": [
            {"name": "LevelList", "form": "list", "nameJa": "\u6c17\u914d\u4e00\u89a7", "description": "d1",
             "elementType": "Level", "elementFieldName": "level", "lengthOfCount": 3},
            {"name": "Level", "form": "record", "nameJa": "\u6c17\u914d", "kind": "k1", "fields": [
                {"name": "v", "nameJa": "\u6570\u91cf", "type": "Quantity", "maxSize": 2147483647,
                 "description": "d2"},
                {"name": "p", "nameJa": "\u5024\u6bb5", "type": "decimal"}]},
            {"name": "Quantity", "form": "simple", "nameJa": "\u6570\u91cf", "description": "\u682a\u6570"}],
        "messages": [
            {"name": "Board", "id": "board", "nameJa": "\u677f\u60c5\u5831", "kind": "notice", "description": "d3",
             "fields": [{"name": "asks", "nameJa": "\u58f2\u6c17\u914d", "type": "LevelList"}]},
            {"name": "Level", "id": "Level", "nameJa": "\u7a7a", "fields": []}]})");
    EXPECT_THAT(loaded.complaints, IsEmpty());
    ASSERT_FALSE(loaded.registry.isNull());
    MessageDefManager const & registry = *loaded.registry;
    EXPECT_THAT(typeNames(registry), ElementsAre("string", "integer", "decimal", "boolean",
                                                 "LevelList", "Level", "Quantity"));

    DataTypeDef const * const quantity = registry.getDataTypeDefByName("Quantity");
    EXPECT_TRUE(quantity->isSimpleType());
    EXPECT_EQ(quantity->getNameJa(), "\x90\x94\x97\xCA");  // in the code page
    EXPECT_EQ(quantity->getDescription(), "\x8A\x94\x90\x94");

    DataTypeDef const * const type = registry.getDataTypeDefByName("Level");
    ASSERT_TRUE(type->isRecordType());
    auto const & level = static_cast<RecordTypeDef const &>(*type);
    EXPECT_EQ(level.getNameJa(), "\x8B\x43\x94\x7A");
    EXPECT_EQ(level.getKind(), "k1");
    ASSERT_EQ(level.getFieldCount(), 2U);
    FieldDef const & v = *level.getFieldDefList()[0];
    EXPECT_EQ(&v, level.getFieldDef("v"));
    EXPECT_EQ(v.getType(), quantity);
    EXPECT_EQ(v.getTypeName(), "Quantity");
    EXPECT_EQ(v.getNameJa(), "\x90\x94\x97\xCA");
    EXPECT_EQ(v.getDescription(), "d2");
    EXPECT_EQ(v.getMaxSize(), 2147483647);
    EXPECT_EQ(v.getEnclosingRecordType(), &level);
    EXPECT_EQ(v.getQualifiedName(), "Level.v");
    FieldDef const & p = *level.getFieldDefList()[1];
    EXPECT_EQ(p.getType(), SimpleTypeDef::DECIMAL_TYPE());
    EXPECT_EQ(p.getDescription(), "");
    EXPECT_EQ(p.getMaxSize(), 0);

    ASSERT_TRUE(registry.getDataTypeDefByName("LevelList")->isListType());
    auto const & levels =
        static_cast<ListTypeDef const &>(*registry.getDataTypeDefByName("LevelList"));
    EXPECT_EQ(levels.getElementTypeDef(), &level);
    EXPECT_EQ(levels.getElementTypeName(), "Level");
    EXPECT_EQ(levels.getElementFieldName(), "level");
    EXPECT_EQ(levels.getLengthOfCount(), 3U);
    EXPECT_EQ(levels.getDescription(), "d1");

    ASSERT_EQ(registry.getMessageDefList().size(), 2U);
    MessageTypeDef const & board = *registry.getMessageDefList()[0];
    EXPECT_EQ(&board, registry.getMessageDefByName("Board"));
    EXPECT_EQ(board.getMessageTypeId(), "board");
    EXPECT_EQ(board.getNameJa(), "\x94\xC2\x8F\xEE\x95\xF1");
    EXPECT_EQ(board.getKind(), "notice");
    EXPECT_EQ(board.getDescription(), "d3");
    ASSERT_EQ(board.getFieldCount(), 1U);
    EXPECT_EQ(board.getFieldDefList()[0]->getType(), &levels);
    EXPECT_EQ(board.getFieldDefList()[0]->getQualifiedName(), "Board.asks");
    EXPECT_EQ(registry.getMessageDefByName("Level")->getFieldCount(), 0U);
}

TEST(CatalogueLoader, TakesAFileWithoutDefinitions) {
    LoadedCatalogue const loaded = loadCatalogue(file({}));
    ASSERT_FALSE(loaded.registry.isNull());
    EXPECT_THAT(typeNames(*loaded.registry),
                ElementsAre("string", "integer", "decimal", "boolean"));
    EXPECT_THAT(loaded.registry->getMessageDefList(), IsEmpty());
}

TEST(CatalogueLoader, ReportsEachFaultWithItsPlace) {
    struct Row {
        char const * name;
        std::string json;
        std::vector<std::string> complaints;
    };
    std::string const good = simpleType("Price");
    Row const rows[] = {
        {"no JSON",
         "x",
         {"invalid message data near position 0: tag '{' is expected, but was <x>..."}},
        {"no text at all",
         "",
         {"invalid message data near position 0: tag '{' is expected, but was <>..."}},
        {"an array",
         "[]",
         {"invalid message data near position 0: tag '{' is expected, but was <[]>..."}},
        {"nothing inside", "{}", {"types: missing", "messages: missing"}},
        {"null for an array", R"({"types":null,"messages":[]})", {"types: missing"}},
        {"a string for an array",
         R"({"types":"x","messages":{}})",
         {"types: an array is expected, not a string",
          "messages: an array is expected, not an object"}},
        {"an unknown member of the file",
         R"({"types":[],"messages":[],"x\n\u3042":1})",
         {"unknown member \"x\\x0A\xE3\x81\x82\""}},

        {"a number for a type",
         file({good, "1"}),
         {"types[1]: an object is expected, not a number"}},
        {"a boolean for a type",
         file({"true"}),
         {"types[0]: an object is expected, not a boolean"}},
        {"an array for a message",
         file({}, {"[]"}),
         {"messages[0]: an object is expected, not an array"}},
        {"a string for a field",
         file({recordType("R", {R"("x")"})}),
         {"types[0].fields[0]: an object is expected, not a string"}},

        {"no form", file({R"({"name":"a","nameJa":"b","fields":[]})"}), {"types[0].form: missing"}},
        {"an empty form",
         file({R"({"name":"a","nameJa":"b","form":""})"}),
         {"types[0].form: empty"}},
        {"an unknown form",
         file({R"({"name":"a","nameJa":"b","form":"recrod","fields":[]})"}),
         {"types[0].form: unknown form \"recrod\""}},
        {"another kind of form",
         file({R"({"name":"a","nameJa":"b","form":false})"}),
         {"types[0].form: a string is expected, not a boolean"}},

        {"a type without names",
         file({R"({"form":"simple"})"}),
         {"types[0].name: missing", "types[0].nameJa: missing"}},
        {"empty names",
         file({R"({"form":"simple","name":"","nameJa":""})"}),
         {"types[0].name: empty", "types[0].nameJa: empty"}},
        {"other kinds of names",
         file({R"({"form":"simple","name":1,"nameJa":[],"description":{}})"}),
         {"types[0].name: a string is expected, not a number",
          "types[0].nameJa: a string is expected, not an array",
          "types[0].description: a string is expected, not an object"}},
        {"two types without a name are no duplicates",
         file({R"({"form":"simple","nameJa":"a"})", R"({"form":"simple","nameJa":"a"})"}),
         {"types[0].name: missing", "types[1].name: missing"}},
        {"a duplicate type name",
         file({good, simpleType("x"), listType("Price", "string")}),
         {"types[2].name: duplicate type name \"Price\""}},
        {"a built-in type name",
         file({simpleType("boolean")}),
         {"types[0].name: duplicate type name \"boolean\""}},
        {"an unknown member of a simple type",
         file({R"({"name":"a","nameJa":"b","form":"simple","fields":[]})"}),
         {"types[0]: unknown member \"fields\""}},

        {"a record without fields",
         file({R"({"name":"a","nameJa":"b","form":"record"})"}),
         {"types[0].fields: missing"}},
        {"another kind of kind",
         file({R"({"name":"a","nameJa":"b","form":"record","fields":[],"kind":1})"}),
         {"types[0].kind: a string is expected, not a number"}},
        {"an unknown member of a record",
         file({R"({"name":"a","nameJa":"b","form":"record","fields":[],"elementType":"string"})"}),
         {"types[0]: unknown member \"elementType\""}},
        {"an unknown type of a field",
         file({good, recordType("R", {field("a", "Price"), field("b", "Prise")})}),
         {"types[1].fields[1].type: unknown type \"Prise\""}},
        {"the case of a type's name counts",
         file({good, recordType("R", {field("a", "price")})}),
         {"types[1].fields[0].type: unknown type \"price\""}},
        {"a field without anything",
         file({recordType("R", {"{}"})}),
         {"types[0].fields[0].name: missing", "types[0].fields[0].nameJa: missing",
          "types[0].fields[0].type: missing"}},
        {"two fields without a name are no duplicates",
         file({recordType(
             "R", {R"({"nameJa":"a","type":"string"})", R"({"nameJa":"a","type":"string"})"})}),
         {"types[0].fields[0].name: missing", "types[0].fields[1].name: missing"}},
        {"a duplicate field",
         file({recordType("R",
                          {field("a", "string"), field("b", "string"), field("a", "integer")})}),
         {"types[0].fields[2].name: duplicated field definition: R.a"}},
        {"an unknown member of a field",
         file({recordType("R", {R"({"name":"a","nameJa":"a","type":"string","maxsize":1})"})}),
         {"types[0].fields[0]: unknown member \"maxsize\""}},

        {"a list without an element type",
         file({R"({"name":"a","nameJa":"b","form":"list"})"}),
         {"types[0].elementType: missing"}},
        {"an unknown element type",
         file({listType("L", "Prise")}),
         {"types[0].elementType: unknown type \"Prise\""}},
        {"other kinds of a list's members",
         file({R"({"name":"a","nameJa":"b","form":"list","elementType":{},"elementFieldName":1,
                   "lengthOfCount":"3"})"}),
         {"types[0].elementType: a string is expected, not an object",
          "types[0].elementFieldName: a string is expected, not a number",
          "types[0].lengthOfCount: a whole number from 1 to 2147483647 is expected"}},

        {"a message without anything",
         file({}, {"{}"}),
         {"messages[0].name: missing", "messages[0].nameJa: missing", "messages[0].id: missing",
          "messages[0].fields: missing"}},
        {"a duplicate message name",
         file({}, {message("M", "m", {}), message("M", "n", {})}),
         {"messages[1].name: duplicate message name \"M\""}},
        {"a duplicate message id",
         file({}, {message("M", "m", {}), message("N", "m", {})}),
         {"messages[1].id: duplicate message id \"m\""}},
        {"a duplicate field of a message",
         file({}, {message("M", "m", {field("a", "string"), field("a", "string")})}),
         {"messages[0].fields[1].name: duplicated field definition: M.a"}},
        {"a message is no type",
         file({}, {message("M", "m", {field("a", "M")})}),
         {"messages[0].fields[0].type: unknown type \"M\""}},
        {"an unknown member of a message",
         file({}, {R"({"name":"M","id":"m","nameJa":"j","fields":[],"form":"record"})"}),
         {"messages[0]: unknown member \"form\""}},

        {"a list of itself",
         file({listType("L", "L")}),
         {"types[0].elementType: a cycle of types: \"L\" -> \"L\""}},
        {"lists of each other",
         file({listType("A", "B"), listType("B", "C"), listType("C", "A")}),
         {"types[2].elementType: a cycle of types: \"A\" -> \"B\" -> \"C\" -> \"A\""}},
        {"a record in itself",
         file({recordType("R", {field("a", "string"), field("b", "R")})}),
         {"types[0].fields[1].type: a cycle of types: \"R\" -> \"R\""}},
        {"a record in a list in itself",
         file({recordType("R", {field("a", "L")}), listType("L", "R")}),
         {"types[1].elementType: a cycle of types: \"R\" -> \"L\" -> \"R\""}},
        {"a cycle behind others",
         file({listType("A", "B"), listType("B", "C"), listType("C", "B")}),
         {"types[2].elementType: a cycle of types: \"B\" -> \"C\" -> \"B\""}},
        {"two cycles through one type",
         file({recordType("R", {field("a", "R"), field("b", "L")}), listType("L", "R")}),
         {"types[0].fields[0].type: a cycle of types: \"R\" -> \"R\"",
          "types[1].elementType: a cycle of types: \"R\" -> \"L\" -> \"R\""}},
        {"a long cycle names its first types",
         file({listType("A", "B"), listType("B", "C"), listType("C", "D"), listType("D", "E"),
               listType("E", "F"), listType("F", "G"), listType("G", "H"), listType("H", "I"),
               listType("I", "A")}),
         {"types[8].elementType: a cycle of types: \"A\" -> \"B\" -> \"C\" -> \"D\" -> \"E\" -> "
          "\"F\" -> \"G\" -> \"H\" -> ... -> \"A\""}},

        {"a terminal is not steered",
         file({listType("L", "\\u001b[2J")}),
         {"types[0].elementType: unknown type \"\\x1B[2J\""}},
        {"names are shown in UTF-8",
         file({listType("L", "\xE6\xB0\x97\xE9\x85\x8D")}),
         {"types[0].elementType: unknown type \"\xE6\xB0\x97\xE9\x85\x8D\""}},
        {"what refers to a faulty type is not wrong",
         file({R"({"name":"A","form":"x"})", listType("L", "A")}),
         {"types[0].nameJa: missing", "types[0].form: unknown form \"x\""}},
        {"a refused duplicate is looked at too",
         file({listType("L", "string"), listType("L", "L"), recordType("L", {field("a", "no")})}),
         {"types[1].name: duplicate type name \"L\"", "types[2].name: duplicate type name \"L\"",
          "types[2].fields[0].type: unknown type \"no\""}},
        {"all at once",
         file({recordType("R", {field("a", "S"), field("a", "R")}), "0"}, {message("M", "", {})}),
         {"types[0].fields[1].name: duplicated field definition: R.a",
          "types[1]: an object is expected, not a number", "messages[0].id: empty",
          "types[0].fields[0].type: unknown type \"S\"",
          "types[0].fields[1].type: a cycle of types: \"R\" -> \"R\""}},
    };
    for (Row const & row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_THAT(complaintsAbout(row.json), ElementsAreArray(row.complaints));
    }
}

TEST(CatalogueLoader, TakesWholeNumbersAboveZeroAsSizes) {
    struct Row {
        char const * number;
        bool good;
    };
    constexpr Row ROWS[] = {
        {"1", true},
        {"2147483647", true},
        {"2147483648", false},
        {"0", false},
        {"-1", false},
        {"1.0", false},
        {"1e2", false},
        {"true", false},
        {"false", false},
        {"\"1\"", false},
        {"[1]", false},
        {"4294967297", false},
        {"99999999999999999999", false},
    };
    for (Row const & row : ROWS) {
        SCOPED_TRACE(row.number);
        std::vector<std::string> expected;
        if (!row.good) {
            expected.emplace_back(
                "types[0].fields[0].maxSize: a whole number from 1 to 2147483647 is expected");
        }
        std::string const sized = R"({"name":"a","nameJa":"a","type":"string","maxSize":)" +
                                  std::string(row.number) + "}";
        EXPECT_EQ(complaintsAbout(file({recordType("R", {sized})})), expected);
    }
}

TEST(CatalogueLoader, ReadsNullAsIfItWereNotThere) {
    LoadedCatalogue const loaded = loadCatalogue(
        R"({"types":[null,{"name":"A","form":"simple","nameJa":"a","description":null,"x":null}],)"
        R"("messages":[]})");
    EXPECT_THAT(loaded.complaints, IsEmpty());
    EXPECT_THAT(complaintsAbout(file({"null", "1"})),
                ElementsAre("types[0]: an object is expected, not a number"));
}

TEST(CatalogueLoader, LetsTypesStandInsideEachOtherUpToABound) {
    // The innermost type is "string".
    auto const lists = [](std::size_t count) {
        std::vector<std::string> types;
        for (std::size_t i = 0; i < count; ++i) {
            types.push_back(
                listType(numbered("L", i), i + 1 < count ? numbered("L", i + 1) : "string"));
        }
        return types;
    };
    EXPECT_THAT(complaintsAbout(file(lists(References::MAX_DEPTH - 1))), IsEmpty());
    EXPECT_THAT(complaintsAbout(file(lists(References::MAX_DEPTH))),
                ElementsAre("types[0].elementType: more than 64 types inside each other"));
    EXPECT_THAT(complaintsAbout(file(lists(20'000))),
                ElementsAre("types[19936].elementType: more than 64 types inside each other"));

    std::vector<std::string> backwards = lists(20'000);
    std::reverse(backwards.begin(), backwards.end());
    EXPECT_THAT(complaintsAbout(file(backwards)),
                ElementsAre("types[63].elementType: more than 64 types inside each other"));

    std::vector<std::string> ring = lists(20'000);
    ring.back() = listType("L19999", "L0");
    EXPECT_THAT(complaintsAbout(file(ring)),
                testing::Contains(testing::StartsWith(
                    "types[19999].elementType: a cycle of types: \"L0\" -> \"L1\" -> ")));
}

TEST(CatalogueLoader, FindsCyclesAsASlowModelDoes) {
    constexpr unsigned int SEED = 20140106;
    SCOPED_TRACE(SEED);
    std::mt19937 random(SEED);
    int refused = 0;
    for (int round = 0; round < 400; ++round) {
        std::size_t const count = 1 + random() % 7;
        std::vector<std::vector<std::size_t>> edges(count);
        std::vector<std::string> types;
        for (std::size_t i = 0; i < count; ++i) {
            std::vector<std::string> fields;
            for (std::size_t n = random() % 3; n > 0; --n) {
                edges[i].push_back(random() % count);
                fields.push_back(field(numbered("f", n), numbered("R", edges[i].back())));
            }
            types.push_back(recordType(numbered("R", i), fields));
        }
        auto const hasCycle = [&edges, count] {
            std::vector<std::vector<bool>> leads(count, std::vector<bool>(count, false));
            for (std::size_t i = 0; i < count; ++i) {
                for (std::size_t const to : edges[i]) {
                    leads[i][to] = true;
                }
            }
            for (std::size_t over = 0; over < count; ++over) {
                for (std::size_t from = 0; from < count; ++from) {
                    for (std::size_t to = 0; to < count; ++to) {
                        leads[from][to] = leads[from][to] || (leads[from][over] && leads[over][to]);
                    }
                }
            }
            for (std::size_t i = 0; i < count; ++i) {
                if (leads[i][i]) {
                    return true;
                }
            }
            return false;
        };

        std::vector<std::string> const complaints = complaintsAbout(file(types));
        EXPECT_EQ(!complaints.empty(), hasCycle());
        refused += complaints.empty() ? 0 : 1;

        // Without the fields that were reported there is no cycle left.
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t n = edges[i].size(); n > 0; --n) {
                std::string const place = "types[" + std::to_string(i) + "].fields[" +
                                          std::to_string(n - 1) + "].type: a cycle of types: ";
                if (std::any_of(complaints.begin(), complaints.end(),
                                [&place](std::string const & line) {
                                    return line.compare(0, place.size(), place) == 0;
                                })) {
                    edges[i].erase(edges[i].begin() + static_cast<std::ptrdiff_t>(n - 1));
                }
            }
        }
        EXPECT_FALSE(hasCycle());
    }
    EXPECT_GT(refused, 100);
    EXPECT_LT(refused, 300);
}

}  // namespace tvk::test
