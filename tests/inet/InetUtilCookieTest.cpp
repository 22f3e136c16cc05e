// Cookies: parseSetCookie.

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>

#include "tests/support/CommaLocale.h"
#include "tests/support/CookieModel.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RandomTokens.h"

namespace tvk::test {

void PrintTo(ReadCookie const & read, std::ostream * output) {
    *output << read.position << ' ' << read.error << ' ' << ::testing::PrintToString(read.fields);
}

}  // namespace tvk::test

namespace {

using namespace std::string_view_literals;
using namespace tvk;
using namespace tvk::test;

static_assert(!std::is_default_constructible_v<InetUtil>);

/// Reads from a block that ends with the NUL behind the text.
ReadCookie readTerminated(std::string_view text, std::size_t length, CookieFields const & before) {
    std::string terminated(text);
    terminated.push_back('\0');
    ExactBuffer const block(terminated);
    return readWithLibrary(block, static_cast<unsigned int>(length), before);
}

constexpr long long END = -1;
constexpr char const * NO_ERROR = "";
constexpr char const * NO_NAME = "no cookie name";

struct CookieRow {
    char const * name;
    std::string_view text;
    CookieFields changed;  ///< what the text mentions
    long long position = END;
    char const * error = NO_ERROR;  ///< behind "invalid Set-Cookie: "
};

ReadCookie expectedOf(CookieRow const & row) {
    ReadCookie expected;
    expected.fields = freshCookieFields();
    for (auto const & [name, value] : row.changed) {
        expected.fields[name] = value;
    }
    expected.position =
        row.position == END ? static_cast<long long>(row.text.size()) : row.position;
    if (row.error != NO_ERROR) {
        expected.error = setCookieError(row.error);
    }
    return expected;
}

void expectRows(std::initializer_list<CookieRow> rows) {
    for (CookieRow const & row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(readTerminated(row.text, row.text.size(), freshCookieFields()), expectedOf(row));
    }
}

TEST(ParseSetCookie, ReadsNameValueAndAttributes) {
    expectRows({
        {"short",
         "name=1; Path=/; Secure",
         {{"", "name"}, {"=", "1"}, {"Path", "/"}, {"Secure", "true"}}},
        {"all attributes",
         "Set-Cookie: id=7;Comment=c;Domain=d;Max-Age=60;expires=e;Path=p;Secure;Version=1",
         {{"", "id"},
          {"=", "7"},
          {"Comment", "c"},
          {"Domain", "d"},
          {"Max-Age", "60"},
          {"expires", "e"},
          {"Path", "p"},
          {"Secure", "true"},
          {"Version", "1"}}},
        {"in another order and case",
         "a=b; version=2; SECURE; pATH=/x; EXPIRES=e; max-age=1; DOMAIN=d; comment=c",
         {{"", "a"},
          {"=", "b"},
          {"Comment", "c"},
          {"Domain", "d"},
          {"Max-Age", "1"},
          {"expires", "e"},
          {"Path", "/x"},
          {"Secure", "true"},
          {"Version", "2"}}},
        {"a date with its comma",
         "a=1; expires=Wed, 09-Jun-2021 10:18:14 GMT",
         {{"", "a"}, {"=", "1"}, {"expires", "Wed, 09-Jun-2021 10:18:14 GMT"}}},
        {"twice", "a=1; Path=/x; Path=/y", {{"", "a"}, {"=", "1"}, {"Path", "/y"}}},
    });
}

TEST(ParseSetCookie, StepsOverWhatStandsBeforeTheName) {
    expectRows({
        {"separators", " \t\n\v\f\r;,;, a=1", {{"", "a"}, {"=", "1"}}},
        {"the header's name", "Set-Cookie:a=1", {{"", "a"}, {"=", "1"}}},
        {"in any case, with space", " ;,sET-cOOKIE: \r\n\ta=1", {{"", "a"}, {"=", "1"}}},
        {"another header", "Set-Cookie2: a=1", {{"", "Set"}}, 3},
        {"twice", "Set-Cookie:Set-Cookie:a=1", {{"", "Set"}}, 14},
        {"no separators behind the header's name", "Set-Cookie: ,a=1", {}, 12, NO_NAME},
        {"nor a semicolon", "Set-Cookie:;a=1", {}, 11, NO_NAME},
    });
}

TEST(ParseSetCookie, TheNameIsLettersDigitsAndUnderscores) {
    expectRows({
        {"all", "aZ_09=1", {{"", "aZ_09"}, {"=", "1"}}},
        {"a hyphen ends it", "my-cookie=1", {{"", "my"}}, 2},
        {"a high byte ends it", "caf\xe9=1", {{"", "caf"}}, 3},
        {"a NUL ends it", "a\0b=1"sv, {{"", "a"}}, 1},
        {"a name in quotation marks", "\"a\"=1", {}, 0, NO_NAME},
        {"a high byte", "\xe9=1", {}, 0, NO_NAME},
        {"a NUL", "\0a=1"sv, {}, 0, NO_NAME},
        {"the non-breaking space is none",
         "\xa0"
         "a=1",
         {},
         0,
         NO_NAME},
        {"no name", "=1", {}, 0, NO_NAME},
        {"nothing", "", {}, 0, NO_NAME},
        {"separators only", " ; ;; ", {}, END, NO_NAME},
        {"the header's name only", "Set-Cookie: ", {}, END, NO_NAME},
    });
}

TEST(ParseSetCookie, ANameMayStandAlone) {
    expectRows({
        {"to the end", "a", {{"", "a"}}},
        {"with space", "a \t", {{"", "a"}}},
        {"a semicolon", "a;", {{"", "a"}}},
        {"attributes", "a; Path=/", {{"", "a"}, {"Path", "/"}}},
        {"attributes without a semicolon", "a Path=/", {{"", "a"}, {"Path", "/"}}},
        {"another name", "a b=1", {{"", "a"}}, 2},
    });
}

TEST(ParseSetCookie, TheValueGoesUpToASemicolon) {
    expectRows({
        {"to the end", "a=1", {{"", "a"}, {"=", "1"}}},
        {"with commas", "a=1, b=2", {{"", "a"}, {"=", "1, b=2"}}},
        {"space around the sign", "a \t= \n1", {{"", "a"}, {"=", "1"}}},
        {"space behind it", "a=1 \t;", {{"", "a"}, {"=", "1 \t"}}},
        {"a second sign", "a==1", {{"", "a"}, {"=", "=1"}}},
        {"a mark inside", "a=b\";\"", {{"", "a"}, {"=", "b\""}}, 5},
        {"high bytes and a NUL",
         "a=\xe3\0\xff;"sv,
         {{"", "a"}, {"=", std::string("\xe3\0\xff", 3)}}},
        {"the next cookie", "a=1; b=2", {{"", "a"}, {"=", "1"}}, 5},
        {"the next cookie, close by", "a=1;b=2", {{"", "a"}, {"=", "1"}}, 4},
        {"the next header", "a=1; Set-Cookie: b=2", {{"", "a"}, {"=", "1"}}, 5},
        {"empty at the end", "a=", {{"", "a"}, {"=", ""}}},
        {"empty behind space", "a= ", {{"", "a"}, {"=", ""}}},
        {"empty before a semicolon", "a=;Path=/", {{"", "a"}, {"=", ""}, {"Path", "/"}}},
    });
}

TEST(ParseSetCookie, AQuotedValueKeepsItsMarks) {
    expectRows({
        {"to the end", "a=\"b\"", {{"", "a"}, {"=", "\"b\""}}},
        {"with separators",
         "a=\"b; c, d\";Secure",
         {{"", "a"}, {"=", "\"b; c, d\""}, {"Secure", "true"}}},
        {"empty", "a=\"\"; Path=/", {{"", "a"}, {"=", "\"\""}, {"Path", "/"}}},
        {"behind space", "a= \"b\"", {{"", "a"}, {"=", "\"b\""}}},
        {"without its end", "a=\"b; Path=/", {{"", "a"}, {"=", "\"b; Path=/"}}},
        {"a lone mark", "a=\"", {{"", "a"}, {"=", "\""}}},
        {"a backslash is nothing", "a=\"b\\\"c\"", {{"", "a"}, {"=", "\"b\\\""}}, 6},
        {"attributes behind it", "a=\"b\"Path=/", {{"", "a"}, {"=", "\"b\""}, {"Path", "/"}}},
        {"a comma behind it", "a=\"b\", c=1", {{"", "a"}, {"=", "\"b\""}}, 5},
        {"of an attribute",
         "a=1; Path=\"/x; y\" ;Secure",
         {{"", "a"}, {"=", "1"}, {"Path", "\"/x; y\""}, {"Secure", "true"}}},
        {"of an attribute, without its end",
         "a=1; Path=\"/x;",
         {{"", "a"}, {"=", "1"}, {"Path", "\"/x;"}}},
        {"of an attribute, behind space",
         "a=1; Path= \"/x;y\"",
         {{"", "a"}, {"=", "1"}, {"Path", " \"/x"}},
         15},
    });
}

TEST(ParseSetCookie, DeliberateStepsOverACommaOfTheCookieButNotOfAnAttribute) {
    expectRows({
        {"behind the name", "a, b=1", {{"", "a"}}, 2},
        {"behind name and space", "a ,b", {{"", "a"}}, 3},
        {"behind the sign", "a=, b", {{"", "a"}}, 3},
        {"behind sign and space", "a= ,b", {{"", "a"}}, 4},
        {"behind an attribute", "a=1;Path, b", {{"", "a"}, {"=", "1"}}, 8},
        {"behind attribute and space", "a=1;Path ,b", {{"", "a"}, {"=", "1"}}, 9},
        {"behind the flag", "a=1;Secure, b", {{"", "a"}, {"=", "1"}, {"Secure", "true"}}, 10},
        {"behind an attribute's sign", "a=1;Path=,b;", {{"", "a"}, {"=", "1"}, {"Path", ",b"}}},
        {"in the place of an attribute", "a=1;,Path=/", {{"", "a"}, {"=", "1"}}, 4},
    });
}

TEST(ParseSetCookie, DeliberateKeepsTheSpaceBehindAnAttributesSign) {
    expectRows({
        {"kept", "a=1; Path = /", {{"", "a"}, {"=", "1"}, {"Path", " /"}}},
        {"also behind it",
         "a=1; Path=/ \t; Secure",
         {{"", "a"}, {"=", "1"}, {"Path", "/ \t"}, {"Secure", "true"}}},
        {"space only", "a=1; Path= ", {{"", "a"}, {"=", "1"}, {"Path", " "}}},
    });
}

TEST(ParseSetCookie, AnAttributeMayBeEmpty) {
    expectRows({
        {"without a sign, at the end", "a=1; Path", {{"", "a"}, {"=", "1"}, {"Path", ""}}},
        {"with space", "a=1; Path \t", {{"", "a"}, {"=", "1"}, {"Path", ""}}},
        {"with a sign, at the end", "a=1; Path=", {{"", "a"}, {"=", "1"}, {"Path", ""}}},
        {"before a semicolon",
         "a=1; Path=;Secure",
         {{"", "a"}, {"=", "1"}, {"Path", ""}, {"Secure", "true"}}},
    });
}

TEST(ParseSetCookie, RefusesAnAttributeWithoutASign) {
    std::string const behind = "'=' expected after '";
    for (char const * name : {"Comment", "Domain", "Max-Age", "expires", "Path", "Version"}) {
        std::string text = "a=1;";
        std::string const message = behind + name + "'...";
        for (char const * shown : {"", " \t"}) {
            std::string const whole = text + name + shown + "; Secure";
            auto const position = static_cast<long long>(whole.size() - 8);
            expectRows({{name, whole, {{"", "a"}, {"=", "1"}}, position, message.c_str()}});
        }
    }
}

TEST(ParseSetCookie, ShowsTheNameOfAnAttributeInOneSpelling) {
    expectRows(
        {{"upper case",
          "a=1; EXPIRES!",
          {{"", "a"}, {"=", "1"}},
          12,
          "'=' expected after 'expires'..."},
         {"lower case", "a=1; path!", {{"", "a"}, {"=", "1"}}, 9, "'=' expected after 'Path'..."},
         {"a NUL", "a=1; path\0"sv, {{"", "a"}, {"=", "1"}}, 9, "'=' expected after 'Path'..."},
         {"a high byte",
          "a=1; path\xa0=/",
          {{"", "a"}, {"=", "1"}},
          9,
          "'=' expected after 'Path'..."}});
}

TEST(ParseSetCookie, KeepsWhatItReadBeforeAFailure) {
    expectRows({{"all of it",
                 "a=1; Domain=d; Secure; Path; Version=1",
                 {{"", "a"}, {"=", "1"}, {"Domain", "d"}, {"Secure", "true"}},
                 27,
                 "'=' expected after 'Path'..."}});
}

TEST(ParseSetCookie, DeliberateAttributesMatchByTheirFirstLetters) {
    expectRows({
        {"one letter more",
         "a=1; Pathname=x",
         {{"", "a"}, {"=", "1"}},
         9,
         "'=' expected after 'Path'..."},
        {"a flag and a letter", "a=1; Secured", {{"", "a"}, {"=", "1"}, {"Secure", "true"}}, 11},
        {"a flag with a value", "a=1; Secure=yes", {{"", "a"}, {"=", "1"}, {"Secure", "true"}}, 11},
        {"attributes without a semicolon",
         "a=1; SecureSecurePath=/",
         {{"", "a"}, {"=", "1"}, {"Secure", "true"}, {"Path", "/"}}},
    });
}

TEST(ParseSetCookie, StopsAtWhatItDoesNotKnow) {
    expectRows({
        {"another attribute", "a=1; HttpOnly; Path=/", {{"", "a"}, {"=", "1"}}, 5},
        {"the start of an attribute", "a=1; Pat=/", {{"", "a"}, {"=", "1"}}, 5},
        {"the start at the end", "a=1; Pat", {{"", "a"}, {"=", "1"}}, 5},
        {"a high byte", "a=1; \xa0Path=/", {{"", "a"}, {"=", "1"}}, 5},
        {"a NUL", "a=1; \0Path=/"sv, {{"", "a"}, {"=", "1"}}, 5},
        {"a NUL inside of an attribute", "a=1; Pa\0th=/"sv, {{"", "a"}, {"=", "1"}}, 5},
        {"nothing", "a=1; ;\t; ", {{"", "a"}, {"=", "1"}}},
    });
}

// A text that goes on behind its length

struct CutRow {
    char const * name;
    std::string_view text;
    std::size_t length;
    CookieFields changed;
    long long position;
    char const * error = NO_ERROR;
};

void expectCutRows(std::initializer_list<CutRow> rows) {
    for (CutRow const & row : rows) {
        SCOPED_TRACE(row.name);
        CookieRow const expected{row.name, row.text, row.changed, row.position, row.error};
        EXPECT_EQ(readTerminated(row.text, row.length, freshCookieFields()), expectedOf(expected));
    }
}

TEST(ParseSetCookie, TheLengthEndsNamesValuesAndSpace) {
    expectCutRows({
        {"the name", "abc=1", 2, {{"", "ab"}}, 2},
        {"before the sign", "abc=1", 3, {{"", "abc"}}, 3},
        {"behind the sign", "abc=1", 4, {{"", "abc"}, {"=", ""}}, 4},
        {"before a comma", "a,", 1, {{"", "a"}}, 1},
        {"before the second comma", "a=,", 2, {{"", "a"}, {"=", ""}}, 2},
        {"the value", "a=12", 3, {{"", "a"}, {"=", "1"}}, 3},
        {"before the mark", "a=\"1\"", 2, {{"", "a"}, {"=", ""}}, 2},
        {"before the second mark", "a=\"1\";", 4, {{"", "a"}, {"=", "\"1"}}, 4},
        {"space", "a  ,", 2, {{"", "a"}}, 2},
        {"space before the name", "  a", 1, {}, 1, NO_NAME},
        {"before an attribute's sign", "a=1;Path=/", 8, {{"", "a"}, {"=", "1"}, {"Path", ""}}, 8},
        {"before an attribute's comma", "a=1;Path,", 8, {{"", "a"}, {"=", "1"}, {"Path", ""}}, 8},
        {"before an attribute's value", "a=1;Path=/", 9, {{"", "a"}, {"=", "1"}, {"Path", ""}}, 9},
        {"an attribute's value", "a=1;Path=/x", 10, {{"", "a"}, {"=", "1"}, {"Path", "/"}}, 10},
        {"behind the value", "a=1;Path=/x", 3, {{"", "a"}, {"=", "1"}}, 3},
    });
}

TEST(ParseSetCookie, DeliberateAWordMayPassTheLength) {
    expectCutRows({
        {"the header's name", "Set-Cookie: a=1", 3, {}, 11, NO_NAME},
        {"the header's name of no text", "Set-Cookie: a=1", 0, {}, 11, NO_NAME},
        {"an attribute", "a=1;Path=/", 5, {{"", "a"}, {"=", "1"}, {"Path", ""}}, 8},
        {"an attribute right behind it", "a=1;Path=/", 4, {{"", "a"}, {"=", "1"}, {"Path", ""}}, 8},
        {"the flag", "a=1;Secure;Path=/", 5, {{"", "a"}, {"=", "1"}, {"Secure", "true"}}, 10},
        {"a word that ends with the text", "a=1;Path", 6, {{"", "a"}, {"=", "1"}, {"Path", ""}}, 8},
        {"a word that ends early", "a=1;Pat", 5, {{"", "a"}, {"=", "1"}}, 4},
    });
}

// The rest

TEST(ParseSetCookie, TheNextCallGoesOn) {
    std::string_view const header =
        "Set-Cookie: a=1; Path=/, x; b=2; Secure; c, d=\"4\"; Version=1";
    struct Step {
        std::string name;
        std::string value;
    };
    std::vector<Step> steps;
    std::size_t at = 0;
    while (at < header.size()) {
        ReadCookie const read =
            readTerminated(header.substr(at), header.size() - at, freshCookieFields());
        ASSERT_EQ(read.error, NO_FAILURE);
        steps.push_back({read.fields.at(""), read.fields.at("=")});
        at += static_cast<std::size_t>(read.position);
    }
    ASSERT_EQ(steps.size(), 4u);
    EXPECT_EQ(steps[0].name + steps[0].value, "a1");
    EXPECT_EQ(steps[1].name + steps[1].value, "b2");
    EXPECT_EQ(steps[2].name + steps[2].value, "cvalue");
    EXPECT_EQ(steps[3].name + steps[3].value, "d\"4\"");
}

TEST(ParseSetCookie, SetsDomainCodeAndMessageOfAnErrorAlone) {
    ErrorInfo const cause(7);
    ErrorInfo error(3, "domain", 4, "message", &cause);
    CookieInfo cookie;
    InetUtil::parseSetCookie("a=1", 3, &cookie, &error);
    EXPECT_EQ(error.toString(), "4@domain(message)");

    EXPECT_EQ(InetUtil::parseSetCookie(" =", 2, &cookie, &error), 1);
    EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
    EXPECT_EQ(error.getErrorCode(), -1);
    EXPECT_EQ(error.getErrorMessage(), "invalid Set-Cookie: no cookie name");
    EXPECT_EQ(error.getComponentCode(), 3);
    ASSERT_NE(error.getCause(), nullptr);
    EXPECT_EQ(error.getCause()->getComponentCode(), 7);
}

TEST(ParseSetCookie, FollowsNoLocale) {
    CommaLocale const locale;
    if (!locale.isSet()) {
        GTEST_SKIP() << "no locale with a decimal comma can be had here";
    }
    expectRows({{"a letter of Latin-1", "\xe9=1", {}, 0, NO_NAME},
                {"a space of Latin-1", "a=1; \xa0Path=/", {{"", "a"}, {"=", "1"}}, 5}});
}

TEST(ParseSetCookie, AgreesWithTheModelOnRandomTexts) {
    RandomTokens tokens(
        20210609, {" ",       "\t",       ";",    "; ",          ";",      ",",       "=",
                   "=",       "\"",       "a",    "b_1",         "-",      "Comment", "DOMAIN",
                   "max-age", "Expires",  "path", "Path=",       "Secure", "Version", "Pat",
                   "h",       "Set-Cook", "ie:",  "Set-Cookie:", "a=1;",   "a=\"",    "\xa0",
                   "\xe9",    "\0"sv,     "%s",   "a=1;Path",    "\r\n"});
    int failureCount = 0;
    int successCount = 0;
    int beyondCount = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string const text = tokens.text(14);
        CookieFields before = freshCookieFields();
        before["Secure"] = round % 2 == 0 ? "" : "true";
        for (std::size_t length = 0; length <= text.size(); ++length) {
            ReadCookie const read = readTerminated(text, length, before);
            ASSERT_EQ(read, readWithModel(text, length, before))
                << ::testing::PrintToString(text) << " with length " << length;
            ASSERT_LE(read.position, static_cast<long long>(text.size()));
            ++(read.error == NO_FAILURE ? successCount : failureCount);
            beyondCount += read.position > static_cast<long long>(length) ? 1 : 0;
        }
    }
    EXPECT_GT(successCount, 100000);
    EXPECT_GT(failureCount, 100000);
    EXPECT_GT(beyondCount, 10000);
}

}  // namespace
