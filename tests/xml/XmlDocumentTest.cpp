#include "tvk/xml/XmlDocument.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/PrintCString.h"
#include "tests/support/Recorded.h"
#include "tests/support/VirtualOrder.h"

namespace tvk {
namespace {

using test::Log;
using test::Recorded;
using Document = RefCountedPtr<XmlDocument>;
using Element = RefCountedPtr<XmlElement>;

static_assert(std::is_base_of_v<RefCounted, XmlDocument>);
static_assert(!std::is_destructible_v<XmlDocument>);
static_assert(std::is_same_v<decltype(&XmlDocument::getRootElement),
                             RefCountedPtr<XmlElement> (XmlDocument::*)() const>);

TEST(XmlDocument, StartsWithoutTextAndRoot) {
    Document const document(new XmlDocument);
    EXPECT_EQ(document->text(), "");
    EXPECT_TRUE(document->getRootElement().isNull());
    EXPECT_EQ(document->getRefCount(), 1);
}

TEST(XmlDocument, GivesItsTextByReference) {
    Document const document(new XmlDocument);
    document->text() = "free text";
    XmlDocument const & read = *document;
    EXPECT_EQ(read.text(), "free text");
    EXPECT_EQ(&read.text(), &document->text());
}

TEST(XmlDocument, HoldsOneReferenceToItsRoot) {
    Document document(new XmlDocument);
    Element const root(new XmlElement("root"));
    document->setRootElement(root);
    EXPECT_EQ(root->getRefCount(), 2);
    EXPECT_EQ(document->getRootElement(), root);
    {
        Element const again = document->getRootElement();
        EXPECT_EQ(root->getRefCount(), 3);
    }
    document->setRootElement(root);
    EXPECT_EQ(root->getRefCount(), 2);
    document = nullptr;
    EXPECT_EQ(root->getRefCount(), 1);
}

TEST(XmlDocument, ReplacesItsRoot) {
    Log log;
    Document const document(new XmlDocument);
    document->setRootElement(new Recorded<XmlElement>(&log, "old"));
    document->setRootElement(document->getRootElement());
    EXPECT_EQ(log, Log{});
    document->setRootElement(new Recorded<XmlElement>(&log, "new"));
    EXPECT_EQ(log, (Log{"end old", "gone old"}));
    document->setRootElement(nullptr);
    EXPECT_EQ(log, (Log{"end old", "gone old", "end new", "gone new"}));
    EXPECT_TRUE(document->getRootElement().isNull());
}

TEST(XmlDocument, ARootThatOnlyTheOldRootKeepsAliveMayBeSet) {
    Document const document(new XmlDocument);
    document->setRootElement(new XmlElement("outer"));
    document->getRootElement()->addSubElement(new XmlElement("inner"));
    document->setRootElement(document->getRootElement()->subElementList().front());
    EXPECT_EQ(document->getRootElement()->elementName(), "inner");
    EXPECT_EQ(document->getRootElement()->getRefCount(), 2);
}

TEST(XmlDocument, ACopySharesTheRoot) {
    Document const source(new XmlDocument);
    source->text() = "text";
    source->setRootElement(new XmlElement("root"));
    auto * const unowned = new XmlDocument(*source);
    EXPECT_EQ(unowned->getRefCount(), 0);
    Document const copy(unowned);
    EXPECT_EQ(copy->text(), "text");
    EXPECT_EQ(copy->getRootElement(), source->getRootElement());
    EXPECT_EQ(source->getRootElement()->getRefCount(), 3);
    copy->text() = "own";
    EXPECT_EQ(source->text(), "text");
}

TEST(XmlDocument, AssignmentSharesTheRootAndLeavesTheCountAlone) {
    Log log;
    Document const source(new XmlDocument);
    source->text() = "text";
    source->setRootElement(new XmlElement("root"));
    Document const held = source;
    Document const target(new XmlDocument);
    target->text() = "old";
    target->setRootElement(new Recorded<XmlElement>(&log, "old"));
    *target = *source;
    EXPECT_EQ(log, (Log{"end old", "gone old"}));
    EXPECT_EQ(target->getRefCount(), 1);
    EXPECT_EQ(source->getRefCount(), 2);
    EXPECT_EQ(target->text(), "text");
    EXPECT_EQ(target->getRootElement(), source->getRootElement());
    XmlDocument & same = *target;
    *target = same;
    EXPECT_EQ(target->text(), "text");
    EXPECT_EQ(source->getRootElement()->getRefCount(), 3);
    *target = *Document(new XmlDocument);
    EXPECT_EQ(target->text(), "");
    EXPECT_TRUE(target->getRootElement().isNull());
}

TEST(XmlDocument, AddsNoVirtualOperation) {
    EXPECT_EQ(test::slotOf(&XmlDocument::getRootElement), std::nullopt);
    EXPECT_EQ(test::slotOf(&XmlDocument::setRootElement), std::nullopt);
    EXPECT_EQ(test::slotOf<CString &()>(&XmlDocument::text), std::nullopt);
    EXPECT_EQ(test::slotOf<CString const &() const>(&XmlDocument::text), std::nullopt);
}

}  // namespace
}  // namespace tvk
