#include "tvk/xml/FastXmlUtil.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/PrintCString.h"
#include "tests/support/RecordingXmlParser.h"
#include "tests/support/SmallStack.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TextBytes.h"
#include "tvk/errors/ErrorInfo.h"

namespace tvk {
namespace {

namespace fs = std::filesystem;

using test::RecordingXmlParser;
using test::TemporaryFolder;
using Element = RefCountedPtr<XmlElement>;
using Names = std::vector<CString>;

// That each can be picked by its type is the test.
[[maybe_unused]] constexpr Element (*TAKES_PATH)(XmlElement const &, CString const &) =
    &FastXmlUtil::getFirstSubElementWithPath;
[[maybe_unused]] constexpr Element (*TAKES_NAMES)(
    XmlElement const &, unsigned int, CString const *) = &FastXmlUtil::getFirstSubElementWithPath;
[[maybe_unused]] constexpr Element (*TAKES_LIST)(XmlElement const &, char const *,
                                                 ...) = &FastXmlUtil::getFirstSubElementWithPath;
static_assert(std::is_same_v<decltype(&FastXmlUtil::getFirstSubElementWithPathV),
                             Element (*)(XmlElement const &, char const *, va_list)>);
static_assert(std::is_empty_v<FastXmlUtil>);

Element named(char const * name, std::vector<Element> const & children = {}) {
    Element const element(new XmlElement(name));
    for (Element const & child : children) {
        element->addSubElement(child);
    }
    return element;
}

// ---- Names -----------------------------------------------------------------------------------

TEST(FastXmlUtil, TheUnqualifiedNameStandsBehindTheFirstColon) {
    struct Row {
        char const * name;
        char const * unqualified;
    };
    constexpr Row ROWS[] = {{"a:b", "b"},   {"b", "b"},          {"a:b:c", "b:c"}, {":b", "b"},
                            {"a:", ""},     {":", ""},           {"::", ":"},      {"", ""},
                            {"a/b", "a/b"}, {"\x83\x3A:b", ":b"}};
    for (Row const & row : ROWS) {
        EXPECT_EQ(FastXmlUtil::getUnqualifiedName(row.name), row.unqualified) << row.name;
    }
    EXPECT_EQ(FastXmlUtil::getUnqualifiedName(CString("a\0:b\0c", 6)), CString("b\0c", 3));
    EXPECT_EQ(FastXmlUtil::getUnqualifiedName(CString("a\0b", 3)), CString("a\0b", 3));
}

// ---- Paths -----------------------------------------------------------------------------------

Element byPath(Element const & element, char const * path) {
    return FastXmlUtil::getFirstSubElementWithPath(*element, CString(path));
}

Element byNames(Element const & element, Names const & names) {
    return FastXmlUtil::getFirstSubElementWithPath(
        *element, static_cast<unsigned int>(names.size()), names.data());
}

Element byRest(Element const & element, char const * first, ...) {
    va_list rest;
    va_start(rest, first);
    Element const found = FastXmlUtil::getFirstSubElementWithPathV(*element, first, rest);
    va_end(rest);
    return found;
}

/// Way by way as it is told: every child of the name, and the rest of the path from it.
Element modelOfPath(XmlElement const & element, Names const & names, std::size_t at = 0) {
    if (at == names.size()) {
        return nullptr;
    }
    if (at + 1 == names.size()) {
        return element.getFirstSubElementWithName(names[at]);
    }
    for (Element const & child : element.getSubElementsWithName(names[at])) {
        Element const found = modelOfPath(*child, names, at + 1);
        if (!found.isNull()) {
            return found;
        }
    }
    return nullptr;
}

TEST(FastXmlPath, LeadsToTheFirstElementThatHasTheWholePath) {
    Element const wanted = named("b");
    Element const tree =
        named("root", {named("a"), named("a", {wanted, named("b")}), named("a", {named("b")})});
    EXPECT_EQ(byPath(tree, "a/b"), wanted);
    EXPECT_EQ(byNames(tree, {"a", "b"}), wanted);
    EXPECT_EQ(FastXmlUtil::getFirstSubElementWithPath(*tree, "a", "b", nullptr), wanted);
    EXPECT_EQ(byRest(tree, "a", "b", nullptr), wanted);
    EXPECT_EQ(wanted->getRefCount(), 2);
}

TEST(FastXmlPath, GoesBackSeveralLevels) {
    Element const wanted = named("c");
    Element const tree =
        named("root", {named("a", {named("b", {named("x")}), named("b"), named("x")}),
                       named("a", {named("c")}), named("a", {named("b"), named("b", {wanted})})});
    EXPECT_EQ(byPath(tree, "a/b/c"), wanted);
    EXPECT_TRUE(byPath(tree, "a/b/c/d").isNull());
    EXPECT_TRUE(byPath(tree, "a/c/b").isNull());
}

TEST(FastXmlPath, LooksOneLevelBelowTheElementAndNotAtItself) {
    Element const tree = named("a", {named("b", {named("c")})});
    EXPECT_TRUE(byPath(tree, "a").isNull());
    EXPECT_TRUE(byPath(tree, "c").isNull());
    EXPECT_EQ(byPath(tree, "b")->elementName(), "b");
}

TEST(FastXmlPath, IsEmptyWithoutNames) {
    Element const tree = named("a", {named("b"), named("")});
    EXPECT_TRUE(byNames(tree, {}).isNull());
    EXPECT_TRUE(FastXmlUtil::getFirstSubElementWithPath(*tree, 0, nullptr).isNull());
    char const * const none = nullptr;
    EXPECT_TRUE(FastXmlUtil::getFirstSubElementWithPath(*tree, none, nullptr).isNull());
    EXPECT_TRUE(byRest(tree, nullptr).isNull());
}

TEST(FastXmlPath, ListsEndWithTheFirstNull) {
    Element const tree = named("root", {named("a", {named("b")})});
    EXPECT_EQ(byRest(tree, "a", nullptr, "b", nullptr)->elementName(), "a");
    EXPECT_TRUE(byRest(tree, nullptr, "a", nullptr).isNull());
    EXPECT_EQ(FastXmlUtil::getFirstSubElementWithPath(*tree, "a", nullptr)->elementName(), "a");
}

TEST(FastXmlPath, NamesInAListAreNotSplit) {
    Element const tree = named("root", {named("a", {named("b")}), named("a/b")});
    EXPECT_EQ(FastXmlUtil::getFirstSubElementWithPath(*tree, "a/b", nullptr)->elementName(), "a/b");
    EXPECT_EQ(byNames(tree, {"a/b"})->elementName(), "a/b");
    EXPECT_EQ(byPath(tree, "a/b")->elementName(), "b");
}

TEST(FastXmlPath, ListsMayBeLong) {
    Element const tree = named(
        "0",
        {named(
            "1",
            {named(
                "2",
                {named(
                    "3",
                    {named("4",
                           {named("5",
                                  {named("6", {named("7", {named("8", {named("9")})})})})})})})})});
    EXPECT_EQ(FastXmlUtil::getFirstSubElementWithPath(*tree, "1", "2", "3", "4", "5", "6", "7", "8",
                                                      "9", nullptr)
                  ->elementName(),
              "9");
}

TEST(FastXmlPath, EmptyStepsAreEmptyNames) {
    Element const tree =
        named("root", {named("", {named("", {named("a")}), named("b")}), named("a", {named("")})});
    struct Row {
        char const * path;
        Names names;
    };
    Row const rows[] = {{"", {""}},
                        {"/", {""}},
                        {"//", {"", ""}},
                        {"a/", {"a", ""}},
                        {"/a/", {"a", ""}},
                        {"/b", {"b"}},
                        {"//b", {"", "b"}},
                        {"///a", {"", "", "a"}},
                        {"a//", {"a", "", ""}}};
    for (Row const & row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(byPath(tree, row.path), modelOfPath(*tree, row.names));
        EXPECT_EQ(byNames(tree, row.names), modelOfPath(*tree, row.names));
    }
    EXPECT_EQ(byPath(tree, ""), tree->subElementList().front());
    EXPECT_EQ(byPath(tree, "//b")->elementName(), "b");
    EXPECT_TRUE(byPath(tree, "/b").isNull());
    Element const plain = named("root", {named("a", {named("b")})});
    EXPECT_EQ(byPath(plain, "/a/b"), byPath(plain, "a/b"));
    EXPECT_TRUE(byPath(plain, "").isNull());
    EXPECT_TRUE(byPath(plain, "a//b").isNull());
    EXPECT_TRUE(byPath(plain, "a/b/").isNull());
}

TEST(FastXmlPath, GoesByElementNamesAlone) {
    Element const element = named("name");
    element->qualifiedName() = "p:name";
    element->namespaceURI() = "uri";
    Element const tree = named("root", {element});
    EXPECT_EQ(byPath(tree, "name"), element);
    EXPECT_TRUE(byPath(tree, "p:name").isNull());
    EXPECT_TRUE(byPath(tree, "Name").isNull());
    CString const withNul("n\0a", 3);
    element->elementName() = withNul;
    EXPECT_EQ(byNames(tree, {withNul}), element);
    EXPECT_EQ(FastXmlUtil::getFirstSubElementWithPath(*tree, withNul), element);
    EXPECT_TRUE(byNames(tree, {"n"}).isNull());
}

TEST(FastXmlPath, PassesOverNullSubElements) {
    Element const wanted = named("b");
    Element const tree = named("root", {nullptr, named("a", {nullptr, wanted}), nullptr});
    EXPECT_EQ(byPath(tree, "a/b"), wanted);
    EXPECT_TRUE(byPath(tree, "a/c").isNull());
}

// A literal prefers the list of names to the path, so "a/b" is one name there, not two.
TEST(FastXmlPath, DeliberateALiteralIsTheStartOfAListOfNames) {
    Element const tree = named("root", {named("a", {named("b")})});
    EXPECT_TRUE(FastXmlUtil::getFirstSubElementWithPath(*tree, "a/b", nullptr).isNull());
    EXPECT_EQ(FastXmlUtil::getFirstSubElementWithPath(*tree, CString("a/b"))->elementName(), "b");
}

class RandomTree {
public:
    explicit RandomTree(unsigned int seed) : random_(seed) {}

    Element element(int depth) {
        Element const made(new XmlElement(name()));
        for (unsigned int count = depth == 0 ? 0 : below(5); count != 0; --count) {
            made->addSubElement(below(16) == 0 ? Element() : element(depth - 1));
        }
        return made;
    }

    CString name() {
        constexpr char const * NAMES[] = {"a", "b", "c", ""};
        return NAMES[below(16) == 0 ? 3 : below(3)];
    }

    Names names() {
        Names names;
        for (unsigned int count = below(7); count != 0; --count) {
            names.push_back(name());
        }
        return names;
    }

private:
    unsigned int below(unsigned int bound) { return static_cast<unsigned int>(random_()) % bound; }

    std::mt19937 random_;
};

TEST(FastXmlPath, AgreesWithAPlainModelOnRandomTrees) {
    int found = 0;
    for (unsigned int seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        RandomTree random(seed);
        Element const tree = random.element(6);
        for (int i = 0; i < 100; ++i) {
            Names const names = random.names();
            Element const expected = modelOfPath(*tree, names);
            ASSERT_EQ(byNames(tree, names), expected);
            CString path = "/";
            for (CString const & name : names) {
                path += name + "/";
            }
            if (!names.empty()) {
                ASSERT_EQ(
                    FastXmlUtil::getFirstSubElementWithPath(*tree, path.Left(path.GetLength() - 1)),
                    expected);
            }
            found += expected.isNull() ? 0 : 1;
        }
    }
    EXPECT_GT(found, 3000);
}

TEST(FastXmlPath, AMillionStepsNeedLittleStack) {
    constexpr std::size_t STEPS = 1000000;
    Names names(STEPS - 1, CString("level"));
    names.emplace_back("bottom");
    Element const bottom = named("bottom");
    Element tree = bottom;
    for (std::size_t i = 0; i < STEPS; ++i) {
        tree = named("level", {nullptr, tree});
    }
    CString path;
    path.Preallocate(static_cast<int>(STEPS * 6));
    for (std::size_t i = 1; i < STEPS; ++i) {
        path += "level/";
    }
    path += "bottom";
    test::runOnStack(std::size_t{256} << 10, [&] {
        EXPECT_EQ(byNames(tree, names), bottom);
        EXPECT_EQ(FastXmlUtil::getFirstSubElementWithPath(*tree, path), bottom);
        EXPECT_TRUE(FastXmlUtil::getFirstSubElementWithPath(*tree, path + "/bottom").isNull());
        EXPECT_TRUE(FastXmlUtil::getFirstSubElementWithPath(*named("root"), path).isNull());
        tree = nullptr;
    });
}

// ---- Files -----------------------------------------------------------------------------------

std::size_t openDescriptors() {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

CString textOfPath(fs::path const & path) { return CString(path.c_str()); }

CString messageOf(int failure, fs::path const & path) {
    return CString(
        (std::to_string(failure) + ": " + std::strerror(failure) + "(" + path.string() + ")")
            .c_str());
}

/// The file gives no document, tells of errno and path, and leaves no stream open.
void expectFailure(fs::path const & path, int failure) {
    SCOPED_TRACE(path);
    RecordingXmlParser parser(true, new XmlDocument);
    ErrorInfo error(7);
    std::size_t const before = openDescriptors();
    EXPECT_TRUE(FastXmlUtil::parseXmlFile(textOfPath(path), &parser, &error).isNull());
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_TRUE(parser.calls.empty());
    EXPECT_EQ(error.getDomain(), ErrorInfo::ErrorDomain_POSIX);
    EXPECT_EQ(error.getErrorCode(), failure);
    EXPECT_EQ(error.getErrorMessage(), messageOf(failure, path));
    EXPECT_EQ(error.getComponentCode(), 7);
}

TEST(FastXmlFile, GivesTheParserTheWholeFile) {
    TemporaryFolder const folder;
    std::string const content("<a>\r\n\0\x1A\xFF</a>\n", 14);
    fs::path const path = folder.write("a.xml", content);
    RefCountedPtr<XmlDocument> const document(new XmlDocument);
    RecordingXmlParser parser(true, document);
    ErrorInfo error;
    EXPECT_EQ(FastXmlUtil::parseXmlFile(textOfPath(path), &parser, &error), document);
    EXPECT_EQ(parser.calls, (std::vector<std::string>{"parseBuffer", "getDocument"}));
    EXPECT_EQ(parser.content, content);
    EXPECT_EQ(parser.byteBehind, 0);
    EXPECT_EQ(parser.seenError, &error);
    EXPECT_FALSE(error.hasError());
}

TEST(FastXmlFile, GivesTheParserAnEmptyFileToo) {
    TemporaryFolder const folder;
    RecordingXmlParser parser(true, new XmlDocument);
    unsigned int seenSize = 1;
    bool seenData = false;
    parser.onParse = [&](void const * data, unsigned int size) {
        seenSize = size;
        seenData = data != nullptr;
    };
    ErrorInfo error;
    EXPECT_FALSE(
        FastXmlUtil::parseXmlFile(textOfPath(folder.write("empty", "")), &parser, &error).isNull());
    EXPECT_EQ(seenSize, 0u);
    EXPECT_TRUE(seenData);
    EXPECT_EQ(parser.byteBehind, 0);
}

TEST(FastXmlFile, TheFailureOfAParserIsItsOwn) {
    TemporaryFolder const folder;
    CString const path = textOfPath(folder.write("a.xml", "<a>"));
    RecordingXmlParser parser(false, new XmlDocument);
    ErrorInfo error(7, "domain", 3, "message", nullptr);
    EXPECT_TRUE(FastXmlUtil::parseXmlFile(path, &parser, &error).isNull());
    EXPECT_EQ(parser.calls, std::vector<std::string>{"parseBuffer"});
    EXPECT_EQ(error.getDomain(), "domain");
    EXPECT_EQ(error.getErrorCode(), 3);
    EXPECT_EQ(error.getErrorMessage(), "message");
    EXPECT_EQ(error.getComponentCode(), 7);

    RecordingXmlParser withoutDocument(true, nullptr);
    EXPECT_TRUE(FastXmlUtil::parseXmlFile(path, &withoutDocument, &error).isNull());
    EXPECT_EQ(withoutDocument.calls, (std::vector<std::string>{"parseBuffer", "getDocument"}));
}

TEST(FastXmlFile, FilesThatCannotBeOpenedAreNamed) {
    TemporaryFolder const folder;
    expectFailure(folder.path() / "missing.xml", ENOENT);
    expectFailure(folder.write("file", "<a/>") / "below.xml", ENOTDIR);
    fs::create_symlink("loop", folder.path() / "loop");
    expectFailure(folder.path() / "loop", ELOOP);
    expectFailure(fs::path(), ENOENT);
    if (::geteuid() != 0) {
        fs::path const secret = folder.write("secret", "<a/>");
        fs::permissions(secret, fs::perms::none);
        expectFailure(secret, EACCES);
    }
}

TEST(FastXmlFile, AFolderIsTooBig) {
    TemporaryFolder const folder;
    expectFailure(folder.path(), EFBIG);
}

TEST(FastXmlFile, SizesBeyondAnUnsignedIntAreTooBig) {
    TemporaryFolder const folder;
    fs::path const path = folder.write("big", "");
    std::error_code refused;
    fs::resize_file(path, std::uintmax_t{1} << 32, refused);
    if (refused) {
        GTEST_SKIP() << "no file of 4 GiB: " << refused.message();
    }
    expectFailure(path, EFBIG);
}

TEST(FastXmlFile, WhatHasNoSizeIsRefusedWithErrno) {
    TemporaryFolder const folder;
    int ends[2];  // of a pipe; that its other end is open lets the first one be opened again
    ASSERT_EQ(::pipe(ends), 0);
    expectFailure("/proc/self/fd/" + std::to_string(ends[0]), ESPIPE);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(FastXmlFile, MessagesMayBeLong) {
    std::string const piece = "a%s/";
    std::string path;
    while (path.size() < 100000) {
        path += piece;
    }
    expectFailure(path, ENAMETOOLONG);
}

TEST(FastXmlFile, DeliberateAStreamStaysOpenForEachFileRead) {
    TemporaryFolder const folder;
    CString const path = textOfPath(folder.write("a.xml", "<a/>"));
    ErrorInfo error;
    std::size_t const before = openDescriptors();
    RecordingXmlParser parser(true, new XmlDocument);
    FastXmlUtil::parseXmlFile(path, &parser, &error);
    EXPECT_EQ(openDescriptors(), before + 1);
    FastXmlUtil::parseXmlFile(path, &parser, &error);
    EXPECT_EQ(openDescriptors(), before + 2);
    RecordingXmlParser failing(false);
    FastXmlUtil::parseXmlFile(path, &failing, &error);
    EXPECT_EQ(openDescriptors(), before + 3);
    RecordingXmlParser withoutDocument(true, nullptr);
    FastXmlUtil::parseXmlFile(path, &withoutDocument, &error);
    EXPECT_EQ(openDescriptors(), before + 4);
    RecordingXmlParser throwing;
    throwing.onParse = [](void const *, unsigned int) { throw std::runtime_error("stop"); };
    EXPECT_THROW(FastXmlUtil::parseXmlFile(path, &throwing, &error), std::runtime_error);
    EXPECT_EQ(openDescriptors(), before + 5);
    FastXmlUtil::parseXmlFile(textOfPath(folder.path() / "missing"), &parser, &error);
    FastXmlUtil::parseXmlFile(textOfPath(folder.path()), &parser, &error);
    EXPECT_EQ(openDescriptors(), before + 5);
}

/// A file that tells of more bytes than it gives; empty if the system has none.
fs::path shortFile() {
    for (char const * path :
         {"/sys/kernel/mm/transparent_hugepage/enabled", "/sys/kernel/profiling",
          "/sys/kernel/fscaps", "/sys/devices/system/cpu/online"}) {
        std::error_code missing;
        if (fs::file_size(path, missing) > 1024 && !missing && std::ifstream(path).get() != EOF) {
            return path;
        }
    }
    return {};
}

TEST(FastXmlFile, DeliberateAShortReadGoesUnnoticed) {
    fs::path const path = shortFile();
    if (path.empty()) {
        GTEST_SKIP() << "no file here tells of more than it gives";
    }
    std::string const content{std::istreambuf_iterator<char>(std::ifstream(path).rdbuf()), {}};
    ASSERT_LT(content.size(), fs::file_size(path));
    RecordingXmlParser parser(true, new XmlDocument);
    ErrorInfo error;
    EXPECT_FALSE(FastXmlUtil::parseXmlFile(textOfPath(path), &parser, &error).isNull());
    EXPECT_FALSE(error.hasError());
    EXPECT_EQ(parser.content.size(), fs::file_size(path));
    EXPECT_EQ(parser.content.substr(0, content.size()), content);
    EXPECT_EQ(parser.content.find_first_not_of('\0', content.size()), std::string::npos);
}

}  // namespace
}  // namespace tvk
