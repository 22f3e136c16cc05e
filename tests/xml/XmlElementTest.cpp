#include "tvk/xml/XmlElement.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/PrintCString.h"
#include "tests/support/Recorded.h"
#include "tests/support/SmallStack.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/xml/XmlDocument.h"

namespace tvk {
namespace {

using test::Log;
using test::Recorded;
using test::slotOf;
using Element = RefCountedPtr<XmlElement>;
using Elements = std::list<Element>;
using Names = std::vector<CString>;

static_assert(std::is_base_of_v<RefCounted, XmlElement>);
static_assert(!std::is_destructible_v<XmlElement>);
static_assert(std::is_same_v<decltype(&XmlElement::getAttributeNames),
                             std::vector<CString> (XmlElement::*)() const>);
static_assert(std::is_same_v<decltype(&XmlElement::getSubElementsWithNames),
                             Elements (XmlElement::*)(unsigned int, CString *) const>);
static_assert(std::is_same_v<decltype(&XmlElement::removeSubElement),
                             bool (XmlElement::*)(XmlElement const *)>);
static_assert(std::is_same_v<decltype(&XmlElement::operator==),
                             bool (XmlElement::*)(XmlElement const &) const>);

Element named(char const * name, Elements const & children = {}) {
    Element const element(new XmlElement(name));
    for (Element const & child : children) {
        element->addSubElement(child);
    }
    return element;
}

/// The names of the elements, a null reading "null".
std::string namesOf(Elements const & elements) {
    std::string names;
    for (Element const & element : elements) {
        names += names.empty() ? "" : " ";
        names += element.isNull() ? "null" : element->elementName().GetString();
    }
    return names;
}

// ---- Construction and fields -----------------------------------------------------------------

TEST(XmlElement, StartsEmpty) {
    Element const element(new XmlElement);
    EXPECT_EQ(element->elementName(), "");
    EXPECT_EQ(element->namespaceURI(), "");
    EXPECT_EQ(element->qualifiedName(), "");
    EXPECT_EQ(element->text(), "");
    EXPECT_EQ(element->getAttributeCount(), 0u);
    EXPECT_EQ(element->getSubElementCount(), 0u);
    EXPECT_EQ(element->getRefCount(), 1);
}

TEST(XmlElement, ANameGivesTheElementNameAlone) {
    Element const element(new XmlElement("p:name"));
    EXPECT_EQ(element->elementName(), "p:name");
    EXPECT_EQ(element->namespaceURI(), "");
    EXPECT_EQ(element->qualifiedName(), "");
    EXPECT_EQ(element->text(), "");
    EXPECT_EQ(element->getAttributeCount(), 0u);
    EXPECT_EQ(element->getSubElementCount(), 0u);
}

TEST(XmlElement, GivesItsFieldsByReference) {
    Element const element(new XmlElement);
    XmlElement const & read = *element;
    element->elementName() = "name";
    element->namespaceURI() = "uri";
    element->qualifiedName() = "p:name";
    element->text() = "text";
    element->subElementList().push_back(named("child"));
    EXPECT_EQ(read.elementName(), "name");
    EXPECT_EQ(read.namespaceURI(), "uri");
    EXPECT_EQ(read.qualifiedName(), "p:name");
    EXPECT_EQ(read.text(), "text");
    EXPECT_EQ(&read.subElementList(), &element->subElementList());
    EXPECT_EQ(read.getSubElementCount(), 1u);
}

TEST(XmlElement, AddsNoVirtualOperation) {
    EXPECT_EQ(slotOf(&XmlElement::operator==), std::nullopt);
    EXPECT_EQ(slotOf(&XmlElement::getAttribute), std::nullopt);
    EXPECT_EQ(slotOf(&XmlElement::setAttribute), std::nullopt);
    EXPECT_EQ(slotOf(&XmlElement::addSubElement), std::nullopt);
    EXPECT_EQ(slotOf(&XmlElement::removeSubElement), std::nullopt);
    EXPECT_EQ(slotOf(&XmlElement::getSubElementsWithNames), std::nullopt);
    EXPECT_EQ(slotOf<CString &()>(&XmlElement::text), std::nullopt);
}

// ---- Attributes ------------------------------------------------------------------------------

TEST(XmlElement, AnAbsentAttributeReadsEmptyAndStaysAbsent) {
    Element const element(new XmlElement);
    EXPECT_EQ(element->getAttribute("id"), "");
    EXPECT_FALSE(element->hasAttribute("id"));
    EXPECT_EQ(element->getAttributeCount(), 0u);
}

TEST(XmlElement, SettingAnAttributeAgainKeepsTheLaterValue) {
    Element const element(new XmlElement);
    element->setAttribute("id", "1");
    element->setAttribute("id", "2");
    EXPECT_EQ(element->getAttributeCount(), 1u);
    EXPECT_EQ(element->getAttribute("id"), "2");
    element->setAttribute("id", "");
    EXPECT_TRUE(element->hasAttribute("id"));
    EXPECT_EQ(element->getAttribute("id"), "");
}

TEST(XmlElement, ListsAttributesInTheOrderOfTheirBytes) {
    Element const element(new XmlElement);
    CString const withNul("a\0b", 3);
    for (CString const & name : Names{"b", "\x80", "a", "B", withNul, ""}) {
        element->setAttribute(name, "x" + name);
    }
    Names const names = element->getAttributeNames();
    EXPECT_EQ(names, (Names{"", "B", "a", withNul, "b", "\x80"}));
    EXPECT_EQ(names.capacity(), 6u);
    EXPECT_EQ(element->getAttribute(withNul), "x" + withNul);
    EXPECT_FALSE(element->hasAttribute("A"));
}

TEST(XmlElement, AnAttributesValueIsACopy) {
    Element const element(new XmlElement);
    element->setAttribute("id", "1");
    CString value = element->getAttribute("id");
    value += "2";
    EXPECT_EQ(element->getAttribute("id"), "1");
}

// ---- Sub-elements ----------------------------------------------------------------------------

TEST(XmlElement, AddsAtTheEndAndAtTheFront) {
    Element const element(new XmlElement);
    Element const child = named("c");
    element->addSubElement(child);
    element->addSubElement(named("d"));
    element->addSubElementAtFront(named("b"));
    element->addSubElementAtFront(nullptr);
    element->addSubElement(nullptr);
    element->addSubElement(child);
    EXPECT_EQ(namesOf(element->subElementList()), "null b c d null c");
    EXPECT_EQ(element->getSubElementCount(), 6u);
    EXPECT_EQ(child->getRefCount(), 3);
}

TEST(XmlElement, RemovesTheFirstEntryThatIsTheObject) {
    Element const twin = named("c");
    Element const child = named("c");
    Element const element = named("e", {twin, child, nullptr, child, nullptr});
    EXPECT_TRUE(element->removeSubElement(child.get()));
    EXPECT_EQ(namesOf(element->subElementList()), "c null c null");
    EXPECT_EQ(element->subElementList().front(), twin);
    EXPECT_EQ(child->getRefCount(), 2);
    EXPECT_TRUE(element->removeSubElement(nullptr));
    EXPECT_EQ(namesOf(element->subElementList()), "c c null");
    EXPECT_TRUE(element->removeSubElement(child.get()));
    EXPECT_FALSE(element->removeSubElement(child.get()));
    EXPECT_EQ(child->getRefCount(), 1);
}

TEST(XmlElement, DoesNotRemoveWhatIsMerelyEqual) {
    Element const element = named("e", {named("c")});
    Element const twin = named("c");
    ASSERT_TRUE(*twin == *element->subElementList().front());
    EXPECT_FALSE(element->removeSubElement(twin.get()));
    EXPECT_FALSE(element->removeSubElement(nullptr));
    EXPECT_EQ(element->getSubElementCount(), 1u);
}

TEST(XmlElement, RemovesAllSubElements) {
    Element const child = named("c");
    Element const element = named("e", {child, nullptr, child});
    element->setAttribute("id", "1");
    element->removeAllSubElements();
    EXPECT_EQ(element->getSubElementCount(), 0u);
    EXPECT_EQ(child->getRefCount(), 1);
    EXPECT_EQ(element->getAttributeCount(), 1u);
    element->removeAllSubElements();
    EXPECT_EQ(element->getSubElementCount(), 0u);
}

/// Notes at its end how many sub-elements its parent has then.
class Watching : public XmlElement {
public:
    Watching(XmlElement const * parent, std::vector<unsigned int> * seen)
        : parent_(parent), seen_(seen) {}

protected:
    ~Watching() override { seen_->push_back(parent_->getSubElementCount()); }

private:
    XmlElement const * parent_;
    std::vector<unsigned int> * seen_;
};

TEST(XmlElement, ASubElementThatEndsFindsTheListChanged) {
    std::vector<unsigned int> seen;
    Element const parent = named("e");
    auto const fill = [&] {
        for (int i = 0; i < 3; ++i) {
            parent->addSubElement(new Watching(parent.get(), &seen));
        }
    };
    fill();
    parent->removeSubElement(parent->subElementList().front().get());
    EXPECT_EQ(seen, (std::vector<unsigned int>{2}));
    parent->removeAllSubElements();
    EXPECT_EQ(seen, (std::vector<unsigned int>{2, 0, 0}));
    fill();
    seen.clear();
    *parent = *named("other", {named("only")});
    EXPECT_EQ(seen, (std::vector<unsigned int>{1, 1, 1}));
}

// ---- Look-ups --------------------------------------------------------------------------------

class XmlLookUp : public testing::Test {
protected:
    XmlLookUp() {
        second_->namespaceURI() = "urn:1";
        second_->qualifiedName() = "a";
        third_->namespaceURI() = "urn:1";
        parent_->addSubElementAtFront(nullptr);
    }

    Element const first_ = named("b", {named("a")});  // the "a" stands too deep
    Element const second_ = named("a");
    Element const third_ = named("b");
    Element const fourth_ = named("a");
    Element const parent_ = named("p", {first_, second_, third_, nullptr, fourth_});
};

TEST_F(XmlLookUp, FindsByNameInDocumentOrder) {
    EXPECT_EQ(parent_->getSubElementsWithName("a"), (Elements{second_, fourth_}));
    EXPECT_EQ(parent_->getSubElementsWithName("b"), (Elements{first_, third_}));
    for (char const * const name : {"A", "", "p", "aa", "urn:1"}) {
        EXPECT_EQ(parent_->getSubElementsWithName(name), Elements{}) << name;
    }
    EXPECT_EQ(parent_->getSubElementsWithName(CString("a\0", 2)), Elements{});
}

TEST_F(XmlLookUp, CountsOneReferenceForEachEntry) {
    Elements const found = parent_->getSubElementsWithName("a");
    EXPECT_EQ(second_->getRefCount(), 3);
    EXPECT_EQ(first_->getRefCount(), 2);
}

TEST_F(XmlLookUp, FindsByAnyOfSeveralNames) {
    CString names[] = {"b", "x", "a"};
    EXPECT_EQ(parent_->getSubElementsWithNames(3, names),
              (Elements{first_, second_, third_, fourth_}));
    EXPECT_EQ(parent_->getSubElementsWithNames(2, names), (Elements{first_, third_}));
    EXPECT_EQ(parent_->getSubElementsWithNames(0, names), Elements{});
    EXPECT_EQ(parent_->getSubElementsWithNames(0, nullptr), Elements{});
}

TEST_F(XmlLookUp, ANameThatStandsTwiceListsItsChildrenTwice) {
    CString names[] = {"a", "b", "a"};
    EXPECT_EQ(parent_->getSubElementsWithNames(3, names),
              (Elements{first_, second_, second_, third_, fourth_, fourth_}));
    EXPECT_EQ(second_->getRefCount(), 2);
}

TEST_F(XmlLookUp, FindsInANamespace) {
    EXPECT_EQ(parent_->getSubElementsWithNameInNamespace("a", "urn:1"), (Elements{second_}));
    EXPECT_EQ(parent_->getSubElementsWithNameInNamespace("a", ""), (Elements{fourth_}));
    EXPECT_EQ(parent_->getSubElementsWithNameInNamespace("b", "URN:1"), Elements{});
    EXPECT_EQ(parent_->getSubElementsWithNameInNamespace("c", "urn:1"), Elements{});
}

TEST_F(XmlLookUp, FindsTheFirst) {
    EXPECT_EQ(parent_->getFirstSubElementWithName("a"), second_);
    EXPECT_EQ(parent_->getFirstSubElementWithName("b"), first_);
    EXPECT_TRUE(parent_->getFirstSubElementWithName("B").isNull());
    EXPECT_EQ(parent_->getFirstSubElementWithNameInNamespace("b", "urn:1"), third_);
    EXPECT_EQ(parent_->getFirstSubElementWithNameInNamespace("a", ""), fourth_);
    EXPECT_TRUE(parent_->getFirstSubElementWithNameInNamespace("a", "urn:2").isNull());
    Element const found = parent_->getFirstSubElementWithName("a");
    EXPECT_EQ(found->getRefCount(), 3);
}

TEST_F(XmlLookUp, FindsNothingAmongNoSubElements) {
    EXPECT_TRUE(second_->getFirstSubElementWithName("a").isNull());
    EXPECT_TRUE(second_->getFirstSubElementWithNameInNamespace("a", "").isNull());
    EXPECT_EQ(second_->getSubElementsWithName("a"), Elements{});
}

// ---- Copying ---------------------------------------------------------------------------------

class XmlCopy : public testing::Test {
protected:
    XmlCopy() {
        source_->namespaceURI() = "urn:1";
        source_->qualifiedName() = "p:source";
        source_->text() = "text of the source";
        source_->setAttribute("id", "1");
    }

    void expectLikeTheSource(XmlElement const & element) {
        EXPECT_EQ(element.elementName(), "source");
        EXPECT_EQ(element.namespaceURI(), "urn:1");
        EXPECT_EQ(element.qualifiedName(), "p:source");
        EXPECT_EQ(element.getAttributeNames(), (Names{"id"}));
        EXPECT_EQ(element.getAttribute("id"), "1");
        EXPECT_EQ(element.subElementList(), source_->subElementList());
    }

    Element const child_ = named("child");
    Element const source_ = named("source", {child_, nullptr});
};

TEST_F(XmlCopy, DeliberateACopyHasNoText) {
    auto * const unowned = new XmlElement(*source_);
    EXPECT_EQ(unowned->getRefCount(), 0);
    Element const copy(unowned);
    EXPECT_EQ(copy->text(), "");
    EXPECT_EQ(source_->text(), "text of the source");
    expectLikeTheSource(*copy);
    EXPECT_EQ(child_->getRefCount(), 3);
}

TEST_F(XmlCopy, DeliberateAnAssignedElementKeepsItsText) {
    Element const oldChild = named("old");
    Element const target = named("target", {oldChild});
    Element const held = target;
    target->text() = "own text";
    target->setAttribute("old", "x");
    XmlElement & result = (*target = *source_);
    EXPECT_EQ(&result, target.get());
    EXPECT_EQ(target->text(), "own text");
    EXPECT_EQ(target->getRefCount(), 2);
    EXPECT_EQ(source_->getRefCount(), 1);
    expectLikeTheSource(*target);
    EXPECT_EQ(child_->getRefCount(), 3);
    EXPECT_EQ(oldChild->getRefCount(), 1);
}

TEST_F(XmlCopy, SharesSubElementsButNotTheirListNorTheAttributes) {
    Element const copy(new XmlElement(*source_));
    child_->text() = "seen from both";
    EXPECT_EQ(copy->subElementList().front()->text(), "seen from both");
    copy->setAttribute("id", "2");
    copy->addSubElement(named("new"));
    EXPECT_EQ(source_->getAttribute("id"), "1");
    EXPECT_EQ(source_->getSubElementCount(), 2u);
}

TEST_F(XmlCopy, SelfAssignmentChangesNothing) {
    XmlElement & same = *source_;
    *source_ = same;
    EXPECT_EQ(source_->text(), "text of the source");
    EXPECT_EQ(source_->getRefCount(), 1);
    EXPECT_EQ(child_->getRefCount(), 2);
    expectLikeTheSource(*source_);
}

TEST_F(XmlCopy, ASourceThatOnlyTheTargetKeepsAliveMayBeAssigned) {
    Element const target = named("outer", {named("inner", {child_})});
    *target = *target->subElementList().front();
    EXPECT_EQ(target->elementName(), "inner");
    EXPECT_EQ(target->subElementList(), (Elements{child_}));
    EXPECT_EQ(child_->getRefCount(), 3);
}

// ---- Equality --------------------------------------------------------------------------------

TEST(XmlEquality, GoesByNamesAttributesAndSubElements) {
    std::pair<char const *, std::function<void(XmlElement &)>> const changes[] = {
        {"elementName", [](XmlElement & element) { element.elementName() = "E"; }},
        {"namespaceURI", [](XmlElement & element) { element.namespaceURI() = "urn:2"; }},
        {"qualifiedName", [](XmlElement & element) { element.qualifiedName() = "q:e"; }},
        {"one attribute more", [](XmlElement & element) { element.setAttribute("x", ""); }},
        {"another value", [](XmlElement & element) { element.setAttribute("id", "2"); }},
        {"one sub-element more", [](XmlElement & element) { element.addSubElement(named("c")); }},
        {"a null more", [](XmlElement & element) { element.addSubElement(nullptr); }},
        {"no sub-element", [](XmlElement & element) { element.removeAllSubElements(); }},
        {"another sub-element",
         [](XmlElement & element) { element.subElementList().front() = named("d"); }},
        {"a null for a sub-element",
         [](XmlElement & element) { element.subElementList().front() = nullptr; }},
    };
    auto const made = [] {
        Element const element = named("e", {named("c")});
        element->setAttribute("id", "1");
        return element;
    };
    Element const left = made();
    for (auto const & [name, change] : changes) {
        SCOPED_TRACE(name);
        Element const right = made();
        EXPECT_TRUE(*left == *right);
        EXPECT_TRUE(*right == *left);
        change(*right);
        EXPECT_FALSE(*left == *right);
        EXPECT_FALSE(*right == *left);
        EXPECT_TRUE(*right == *right);
    }
}

TEST(XmlEquality, AttributesOfOtherNamesDiffer) {
    Element const left = named("e");
    Element const right = named("e");
    left->setAttribute("a", "");
    right->setAttribute("b", "");
    EXPECT_FALSE(*left == *right);
}

TEST(XmlEquality, TextTakesNoPart) {
    Element const left = named("e", {named("c")});
    Element const right = named("e", {named("c")});
    left->text() = "left";
    right->subElementList().front()->text() = "right";
    EXPECT_TRUE(*left == *right);
}

TEST(XmlEquality, NullsAreEqualToEachOther) {
    EXPECT_TRUE(*named("e", {nullptr, nullptr}) == *named("e", {nullptr, nullptr}));
    EXPECT_FALSE(*named("e", {nullptr, named("c")}) == *named("e", {nullptr, named("c")}));
    EXPECT_FALSE(*named("e", {named("c"), nullptr}) == *named("e", {named("c"), nullptr}));
}

TEST(XmlEquality, DeliberateTheRightSideStaysAtItsFirstSubElement) {
    Element const a = named("a");
    Element const b = named("b");
    Element const source = named("e", {a, b});
    Element const copy(new XmlElement(*source));
    EXPECT_FALSE(*source == *copy);
    EXPECT_FALSE(*copy == *source);
    EXPECT_TRUE(*source == *source);
    // Only the left side's children are all looked at.
    Element const alike = named("e", {a, named("a")});
    EXPECT_TRUE(*alike == *copy);
    EXPECT_FALSE(*copy == *alike);
    EXPECT_TRUE(*named("outer", {alike}) == *named("outer", {copy}));
}

// ---- Against a plain model -------------------------------------------------------------------

/// An element as plain data. Sub-elements are numbers of others, always higher ones, or NONE.
struct Model {
    std::string name;
    std::string uri;
    std::string qualifiedName;
    std::string text;
    std::map<std::string, std::string> attributes;
    std::vector<int> children;
};
constexpr int NONE = -1;
constexpr int ELEMENTS = 8;

class Trial {
public:
    explicit Trial(unsigned int seed) : random_(seed) {
        for (int i = 0; i < ELEMENTS; ++i) {
            elements_.emplace_back(new XmlElement);
        }
    }

    void step() {
        int const at = below(ELEMENTS);
        XmlElement & element = *elements_[index(at)];
        Model & model = models_[index(at)];
        switch (below(9)) {
            case 0: {
                model.name = letter();
                element.elementName() = model.name.c_str();
                break;
            }
            case 1: {
                model.uri = letter();
                element.namespaceURI() = model.uri.c_str();
                break;
            }
            case 2: {
                std::string const name = letter();
                model.attributes[name] = letter();
                element.setAttribute(name.c_str(), model.attributes[name].c_str());
                break;
            }
            case 3:
            case 4: {
                int const child = childOf(at);
                model.children.push_back(child);
                element.addSubElement(take(child));
                break;
            }
            case 5: {
                int const child = childOf(at);
                model.children.insert(model.children.begin(), child);
                element.addSubElementAtFront(take(child));
                break;
            }
            case 6: {
                int const child = childOf(at);
                auto & children = model.children;
                auto const found = std::find(children.begin(), children.end(), child);
                EXPECT_EQ(element.removeSubElement(take(child).get()), found != children.end());
                if (found != children.end()) {
                    children.erase(found);
                }
                break;
            }
            case 7: {
                model.text = model.qualifiedName = letter();
                element.text() = model.text.c_str();
                element.qualifiedName() = model.qualifiedName.c_str();
                if (below(4) == 0) {
                    model.children.clear();
                    element.removeAllSubElements();
                }
                break;
            }
            default: {
                int const source = at + below(ELEMENTS - at);
                std::string const text = model.text;
                model = Model(models_[index(source)]);
                model.text = text;
                element = *elements_[index(source)];
                break;
            }
        }
    }

    void check() {
        for (int i = 0; i < ELEMENTS; ++i) {
            checkFields(*elements_[index(i)], models_[index(i)]);
            checkLookUps(*elements_[index(i)], models_[index(i)]);
            EXPECT_EQ(elements_[index(i)]->getRefCount(), 1 + placesOf(i)) << i;
        }
        for (int left = 0; left < ELEMENTS; ++left) {
            for (int right = 0; right < ELEMENTS; ++right) {
                bool const same = equal(left, right);
                equalPairs_ += same && left != right ? 1 : 0;
                EXPECT_EQ(*elements_[index(left)] == *elements_[index(right)], same)
                    << left << " and " << right;
            }
        }
    }

    int equalPairs() const { return equalPairs_; }

private:
    static std::size_t index(int number) { return static_cast<std::size_t>(number); }

    int below(int bound) { return static_cast<int>(random_() % static_cast<unsigned int>(bound)); }

    std::string letter() { return std::string(1, "aab"[below(3)]); }

    int childOf(int at) {
        int const child = at + 1 + below(ELEMENTS - at);
        return child == ELEMENTS ? NONE : child;
    }

    Element take(int number) { return number == NONE ? Element() : elements_[index(number)]; }

    int placesOf(int number) const {
        int places = 0;
        for (Model const & model : models_) {
            places +=
                static_cast<int>(std::count(model.children.begin(), model.children.end(), number));
        }
        return places;
    }

    void checkFields(XmlElement const & element, Model const & model) {
        EXPECT_EQ(element.elementName(), model.name.c_str());
        EXPECT_EQ(element.namespaceURI(), model.uri.c_str());
        EXPECT_EQ(element.qualifiedName(), model.qualifiedName.c_str());
        EXPECT_EQ(element.text(), model.text.c_str());
        Names names;
        for (auto const & [name, value] : model.attributes) {
            names.emplace_back(name.c_str());
            EXPECT_EQ(element.getAttribute(name.c_str()), value.c_str());
        }
        EXPECT_EQ(element.getAttributeNames(), names);
        EXPECT_EQ(element.subElementList(), childrenWith(model, [](Model const *) { return 1; }));
    }

    void checkLookUps(XmlElement const & element, Model const & model) {
        std::string const name = letter();
        std::string const uri = letter();
        auto const byName = [&](Model const * child) {
            return child != nullptr && child->name == name ? 1 : 0;
        };
        auto const byBoth = [&](Model const * child) {
            return byName(child) == 1 && child->uri == uri ? 1 : 0;
        };
        CString names[] = {letter().c_str(), name.c_str(), letter().c_str()};
        auto const byNames = [&](Model const * child) {
            return child == nullptr
                       ? 0
                       : static_cast<int>(std::count(names, names + 3, child->name.c_str()));
        };
        Elements const named = childrenWith(model, byName);
        Elements const inNamespace = childrenWith(model, byBoth);
        EXPECT_EQ(element.getSubElementsWithName(name.c_str()), named);
        EXPECT_EQ(element.getSubElementsWithNameInNamespace(name.c_str(), uri.c_str()),
                  inNamespace);
        EXPECT_EQ(element.getSubElementsWithNames(3, names), childrenWith(model, byNames));
        EXPECT_EQ(element.getFirstSubElementWithName(name.c_str()),
                  named.empty() ? Element() : named.front());
        EXPECT_EQ(element.getFirstSubElementWithNameInNamespace(name.c_str(), uri.c_str()),
                  inNamespace.empty() ? Element() : inNamespace.front());
    }

    /// The children, each as often as `times` says; it gets null for a null.
    template <class Times>
    Elements childrenWith(Model const & model, Times const & times) {
        Elements children;
        for (int const child : model.children) {
            Model const * const known = child == NONE ? nullptr : &models_[index(child)];
            children.insert(children.end(), static_cast<std::size_t>(times(known)), take(child));
        }
        return children;
    }

    bool equal(int leftNumber, int rightNumber) const {
        if (leftNumber == rightNumber) {
            return true;
        }
        if (leftNumber == NONE || rightNumber == NONE) {
            return false;
        }
        Model const & left = models_[index(leftNumber)];
        Model const & right = models_[index(rightNumber)];
        if (left.name != right.name || left.uri != right.uri ||
            left.qualifiedName != right.qualifiedName || left.attributes != right.attributes ||
            left.children.size() != right.children.size()) {
            return false;
        }
        return std::all_of(left.children.begin(), left.children.end(),
                           [&](int const child) { return equal(child, right.children.front()); });
    }

    std::mt19937 random_;
    std::vector<Element> elements_;
    Model models_[ELEMENTS];
    int equalPairs_ = 0;
};

TEST(XmlModel, RandomStepsAgreeWithThePlainModel) {
    int equalPairs = 0;
    for (unsigned int seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Trial trial(seed);
        for (int i = 0; i < 40; ++i) {
            trial.step();
            trial.check();
            if (testing::Test::HasFailure()) {
                FAIL() << "at step " << i;
            }
        }
        equalPairs += trial.equalPairs();
    }
    EXPECT_GT(equalPairs, 1000);
}

// ---- Depth -----------------------------------------------------------------------------------

constexpr int DEEP_LEVELS = 1000000;
constexpr std::size_t SMALL_STACK = 256 << 10;

/// That many elements around an innermost one.
Element deepElement(int levels, char const * innermost = "innermost") {
    Element element = named(innermost);
    for (int i = 0; i < levels; ++i) {
        element = named("level", {element});
    }
    return element;
}

TEST(XmlDepth, ReleasingNeedsLittleStack) {
    Element deep = deepElement(DEEP_LEVELS);
    test::runOnStack(SMALL_STACK, [&] { deep = nullptr; });
    EXPECT_TRUE(deep.isNull());
}

TEST(XmlDepth, ReleasingNeedsLittleStackByEveryRoad) {
    std::pair<char const *, std::function<void(Element)>> const roads[] = {
        {"removeSubElement",
         [](Element deep) {
             Element const parent = named("p", {deep});
             XmlElement const * const child = std::exchange(deep, nullptr).get();
             parent->removeSubElement(child);
         }},
        {"removeAllSubElements",
         [](Element deep) {
             Element const parent = named("p", {std::exchange(deep, nullptr)});
             parent->removeAllSubElements();
         }},
        {"assignment",
         [](Element deep) {
             Element const parent = named("p", {std::exchange(deep, nullptr)});
             *parent = *named("q");
         }},
        {"the list itself",
         [](Element deep) {
             Element const parent = named("p", {std::exchange(deep, nullptr)});
             parent->subElementList().clear();
         }},
        {"setRootElement",
         [](Element deep) {
             RefCountedPtr<XmlDocument> const document(new XmlDocument);
             document->setRootElement(std::exchange(deep, nullptr));
             document->setRootElement(nullptr);
         }},
        {"a document",
         [](Element deep) {
             RefCountedPtr<XmlDocument> document(new XmlDocument);
             document->setRootElement(std::exchange(deep, nullptr));
             document = nullptr;
         }},
        {"the last sub-element",
         [](Element deep) {
             Element parent = named("p", {named("a"), nullptr, std::exchange(deep, nullptr)});
             parent = nullptr;
         }},
    };
    for (auto const & [name, road] : roads) {
        SCOPED_TRACE(name);
        Element deep = deepElement(100000);
        test::runOnStack(SMALL_STACK, [&deep, &act = road] { act(std::move(deep)); });
        EXPECT_TRUE(deep.isNull());
    }
}

TEST(XmlDepth, ComparingNeedsLittleStack) {
    Element const left = deepElement(DEEP_LEVELS);
    Element const equal = deepElement(DEEP_LEVELS);
    Element const other = deepElement(DEEP_LEVELS, "other");
    test::runOnStack(SMALL_STACK, [&] {
        EXPECT_TRUE(*left == *equal);
        EXPECT_FALSE(*left == *other);
        EXPECT_TRUE(*left == *left);
    });
}

TEST(XmlDepth, EveryLevelIsComparedToItsLastSubElement) {
    Element left = named("level");
    Element right = named("level");
    std::vector<Element> lastOnes;
    for (int i = 0; i < 300; ++i) {
        Element const first = right->getFirstSubElementWithName("level");
        lastOnes.push_back(i == 0 ? named("level") : named("level", {first, first}));
        left = named("level", {left, lastOnes.back()});
        right = named("level", {right, nullptr});
    }
    EXPECT_TRUE(*left == *right);
    for (Element const & last : lastOnes) {
        last->qualifiedName() = "p:level";
        EXPECT_FALSE(*left == *right);
        last->qualifiedName() = "";
        EXPECT_TRUE(*left == *right);
    }
}

TEST(XmlDepth, ElementsEndInTheOrderOfPlainRecursion) {
    for (int const depth : {1, 10, 63, 64, 65, 200}) {
        SCOPED_TRACE(depth);
        Log log;
        Log expected;
        Element element;
        for (int i = 0; i < depth; ++i) {
            std::string const level = std::to_string(i);
            Element const outer(new Recorded<XmlElement>(&log, level));
            outer->addSubElement(new Recorded<XmlElement>(&log, level + " before"));
            outer->addSubElement(element);
            outer->addSubElement(new Recorded<XmlElement>(&log, level + " behind"));
            Log ends = {"end " + level, "gone " + level, "end " + level + " before",
                        "gone " + level + " before"};
            ends.insert(ends.end(), expected.begin(), expected.end());
            ends.push_back("end " + level + " behind");
            ends.push_back("gone " + level + " behind");
            expected = ends;
            element = outer;
        }
        EXPECT_EQ(log, Log{});
        element = nullptr;
        EXPECT_EQ(log, expected);
    }
}

TEST(XmlDepth, WhatIsHeldElsewhereStays) {
    Element const held = named("held");
    Element deep = held;
    for (int i = 0; i < 500; ++i) {
        deep = named("level", {deep});
    }
    EXPECT_EQ(held->getRefCount(), 2);
    deep = nullptr;
    EXPECT_EQ(held->getRefCount(), 1);
}

}  // namespace
}  // namespace tvk
