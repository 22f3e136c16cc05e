#include "tvk/json/detail/MessageBuilder.h"

#include <array>
#include <cstring>

#include "tvk/json/JsonUtil.h"
#include "tvk/json/detail/JsonSpace.h"
#include "tvk/values/detail/ReadyMade.h"

namespace tvk::detail {

namespace {

/// What is kept from one text to the next: containers of ordinary depth and messages of ordinary size
/// make nothing grow.
constexpr std::size_t STACK_ROOM = 32;
constexpr std::size_t WAITING_ROOM = 256;
constexpr std::size_t MOST_ROOM = 4096;

template <class Element>
void emptyWithRoom(std::vector<Element> & elements, std::size_t room) {
    elements.clear();
    if (elements.capacity() > MOST_ROOM) {
        elements = std::vector<Element>();
    }
    elements.reserve(room);
}

}  // namespace

/// The texts of names seen lately in records that no sequence is known of: a copy of a text costs no
/// allocation.
class MessageBuilder::NameTexts {
public:
    CString const & textOf(char const * name, unsigned int length) {
        // Longer names are rare; keeping them would hold memory that nobody asked for.
        constexpr unsigned int MAXIMUM_LENGTH = 64;
        CString & text = length <= MAXIMUM_LENGTH ? texts_[placeOf(name, length)] : other_;
        if (static_cast<unsigned int>(text.GetLength()) != length ||
            std::memcmp(text.GetString(), name, length) != 0) {
            text = CString(name, static_cast<int>(length));
        }
        return text;
    }

private:
    static constexpr unsigned int PLACES = 256;

    static unsigned int placeOf(char const * name, unsigned int length) {
        unsigned int hash = length;
        for (unsigned int i = 0; i < length; ++i) {
            hash = hash * 33 + static_cast<unsigned char>(name[i]);
        }
        return (hash ^ (hash >> 8)) % PLACES;
    }

    std::array<CString, PLACES> texts_;
    CString other_;
};

MessageBuilder::MessageBuilder(SimpleObjectCache * cache)
    : cache_(cache), nameTexts_(std::make_unique<NameTexts>()) {
    stack_.reserve(STACK_ROOM);
    waiting_.reserve(WAITING_ROOM);
}

MessageBuilder::~MessageBuilder() { drop(); }

void MessageBuilder::start(Root root, char const * data, unsigned int size, int options) {
    drop();
    emptyWithRoom(waiting_, WAITING_ROOM);
    emptyWithRoom(names_, 0);
    emptyWithRoom(stack_, STACK_ROOM);
    sequences_.forgetIfFull();
    root_ = root;
    data_ = data;
    size_ = size;
    options_ = options;
}

void MessageBuilder::drop() {
    result_ = nullptr;
    for (FieldValue * const value : waiting_) {  // from the outside in
        value->removeRef();
    }
    waiting_.clear();
}

void MessageBuilder::endObject() {
    Open & record = stack_.back();
    FieldValue * const * const values = waiting_.data() + record.firstValue;
    bool const isMessage = stack_.size() == 1 && root_ == Root::MESSAGE;
    close(isMessage ? ReadyMade::message(shapeOf(record), values)
                    : ReadyMade::record(shapeOf(record), values));
}

void MessageBuilder::endArray() {
    std::size_t const first = stack_.back().firstValue;
    close(ReadyMade::list(nameOfList(), waiting_.data() + first, waiting_.size() - first));
}

/// Puts a container in the place of what it holds, which has been moved out of here.
void MessageBuilder::close(Value container) {
    waiting_.resize(stack_.back().firstValue);
    names_.resize(stack_.back().firstName);
    stack_.pop_back();
    if (stack_.empty()) {
        result_ = std::move(container);
    } else {
        attach(std::move(container));
    }
}

void MessageBuilder::leaveSequence(Open & record) {
    for (CString const * const name : record.names->names()) {
        names_.push_back(*name);
    }
    record.names = nullptr;
}

void MessageBuilder::keepName(char const * name, unsigned int length) {
    names_.push_back(nameTexts_->textOf(name, length));
}

ShapeReference MessageBuilder::shapeOf(Open & record) {
    if (record.names != nullptr) {
        return record.names->shape();
    }
    std::vector<CString const *> names;
    names.reserve(names_.size() - record.firstName);
    for (std::size_t i = record.firstName; i < names_.size(); ++i) {
        names.push_back(&names_[i]);
    }
    return names.empty() ? ShapeReference() : ShapeReference(new FieldShape(names));
}

/// The name of the field that holds the list on top; none within another list.
CString MessageBuilder::nameOfList() const {
    if (stack_.size() < 2 || !stack_[stack_.size() - 2].isRecord) {
        return CString();
    }
    Open const & record = stack_[stack_.size() - 2];
    return record.namesAndNext != nullptr ? record.namesAndNext->name()
                                          : names_[stack_.back().firstName - 1];
}

/// A value outside of any container: the scanner takes it, this parser does not.
void MessageBuilder::refuseScalar() const {
    CString message;
    message.Format("invalid message data near position %d: an object or an array is expected",
                   static_cast<int>(skipSpace(data_, size_, 0, options_)));
    throw JsonUtil::XParsingError(message);
}

}  // namespace tvk::detail
