#include "examples/catalogue/Table.h"

#include <gtest/gtest.h>

#include "examples/catalogue/Loader.h"

namespace tvk::test {

TEST(CatalogueTable, ShowsAllThatADefinitionSays) {
    LoadedCatalogue const loaded = loadCatalogue(R"({
        "types": [
            {"name": "Code", "form": "simple", "nameJa": "c", "description": "a code"},
            {"name": "Row", "form": "record", "nameJa": "r", "kind": "flat", "fields": [
                {"name": "code", "nameJa": "f", "type": "Code", "maxSize": 12,
                 "description": "first"}]},
            {"name": "Rows", "form": "list", "nameJa": "l", "elementType": "Row"}],
        "messages": [
            {"name": "Empty", "id": "e", "nameJa": "m", "description": "no fields", "fields": []},
            {"name": "All", "id": "a", "nameJa": "n", "kind": "reply", "fields": [
                {"name": "rows", "nameJa": "g", "type": "Rows"},
                {"name": "\u001b", "nameJa": "h", "type": "Code"}]}]})");
    ASSERT_FALSE(loaded.registry.isNull());
    std::string const table = catalogueTable(*loaded.registry);
    EXPECT_EQ(table.substr(table.find("\nCode ") + 1),
              "Code     c              simple                                 a code\n"
              "Row      r              record (flat)\n"
              "  code   f              Code           c                 12    first\n"
              "Rows     l              list of Row    r\n"
              "\n"
              "Message  Japanese name  Type               Type in Japanese  Description\n"
              "-------  -------------  -----------------  ----------------  -----------\n"
              "Empty    m              message e                            no fields\n"
              "All      n              message a (reply)\n"
              "  rows   g              Rows               l\n"
              "  \\x1B   h              Code               c\n");
}

}  // namespace tvk::test
