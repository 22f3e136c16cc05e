#include "modules/expat/detail/TreeBuilder.h"

#include <limits>
#include <new>

#include "tvk/platform/CodePage.h"

namespace tvk::expat {

namespace {

CString inCodePage(std::string_view text) {
    if (text.size() > std::numeric_limits<unsigned int>::max()) {
        throw std::bad_alloc();
    }
    return platform::utf8ToAnsi(text.data(), static_cast<unsigned int>(text.size()));
}

}  // namespace

void TreeBuilder::startElement(Name const & name) {
    RefCountedPtr<XmlElement> const element(new XmlElement(shared(name.local)));
    element->namespaceURI() = shared(name.namespaceURI);
    element->qualifiedName() = qualified(name);
    open_.push_back({element.get(), text_.size()});
    if (open_.size() == 1) {
        root_ = element;
    } else {
        open_[open_.size() - 2].element->addSubElement(element);
    }
}

void TreeBuilder::addAttribute(Name const & name, std::string_view value) {
    open_.back().element->setAttribute(qualified(name), inCodePage(value));
}

void TreeBuilder::addText(std::string_view piece) { text_ += piece; }

void TreeBuilder::endElement() {
    Open const ended = open_.back();
    open_.pop_back();
    // Converted in one go: a character and the mark behind it may be one in the code page.
    if (text_.size() > ended.textStart) {
        ended.element->text() = inCodePage(std::string_view(text_).substr(ended.textStart));
        text_.resize(ended.textStart);
    }
}

CString const & TreeBuilder::shared(std::string_view text) {
    auto const found = shared_.find(text);
    return found != shared_.end() ? found->second
                                  : shared_.emplace(text, inCodePage(text)).first->second;
}

CString const & TreeBuilder::qualified(Name const & name) {
    if (name.prefix.empty()) {
        return shared(name.local);
    }
    qualified_.assign(name.prefix).append(1, ':').append(name.local);
    return shared(qualified_);
}

}  // namespace tvk::expat
