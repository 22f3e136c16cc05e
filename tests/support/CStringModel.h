#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include "tvk/platform/CString.h"

namespace tvk::test {

/// Reads bytes as a program of operations over a few CStrings, and runs it on them and on std::strings
/// beside them. The std::string side is written plainly, from what the operations promise.
class CStringModel {
public:
    CStringModel(void const * program, std::size_t size)
        : at_(static_cast<unsigned char const *>(program)), end_(at_ + size) {}

    /// Null when both sides agree to the end, else the name of the operation behind which they differ.
    char const * run() {
        while (at_ != end_) {
            Operation const & operation = OPERATIONS[byte() % OPERATIONS.size()];
            if (!(this->*operation.run)() || !agrees()) {
                return operation.name;
            }
        }
        return nullptr;
    }

private:
    // Appending a text to itself doubles it: without a limit a short program eats all memory.
    static constexpr std::size_t LENGTH_LIMIT = 4096;

    struct Pair {
        CString text;
        std::string model;
    };
    struct Operation {
        char const * name;
        bool (CStringModel::*run)();
    };

    // What the program gives.

    unsigned char byte() { return at_ == end_ ? static_cast<unsigned char>(0) : *at_++; }
    char character() { return static_cast<char>(byte()); }
    /// Mostly inside short texts, now and then far out on either side.
    int place() { return static_cast<signed char>(byte()) / 2; }
    Pair & pair() { return pairs_[byte() % pairs_.size()]; }
    std::string bytes() {
        std::string result;
        for (int left = byte() % 24; left > 0; --left) {
            result += character();
        }
        return result;
    }
    std::string textWithoutNul() { return std::string(bytes().c_str()); }
    std::size_t offsetIn(std::string const & model) { return byte() % (model.size() + 1); }

    // The model's side of the rules.

    static int intOf(std::size_t number) { return static_cast<int>(number); }
    static int positionOf(std::size_t found) {
        return found == std::string::npos ? -1 : intOf(found);
    }
    static int signOf(int number) { return number < 0 ? -1 : number > 0 ? 1 : 0; }

    static std::string middle(std::string const & model, int first, int count) {
        auto const begin = std::min(static_cast<std::size_t>(std::max(first, 0)), model.size());
        return model.substr(begin, static_cast<std::size_t>(std::max(count, 0)));
    }
    static std::size_t insertPlace(std::string const & model, int index) {
        return static_cast<std::size_t>(std::clamp(index, 0, intOf(model.size())));
    }
    static int find(std::string const & model, std::string const & wanted, int start) {
        return start < 0 || start > intOf(model.size())
                   ? -1
                   : positionOf(model.find(wanted, static_cast<std::size_t>(start)));
    }
    static std::string trimmed(std::string const & model) {
        static constexpr char SPACE[] = " \t\n\v\f\r";
        std::size_t const begin = model.find_first_not_of(SPACE);
        return begin == std::string::npos
                   ? std::string()
                   : model.substr(begin, model.find_last_not_of(SPACE) - begin + 1);
    }
    static std::string lowered(std::string model) {
        for (char & character : model) {
            if (character >= 'A' && character <= 'Z') {
                character = static_cast<char>(character - 'A' + 'a');
            }
        }
        return model;
    }
    static std::string formatted(char const * format, char const * text, int number,
                                 double fraction) {
        std::string result(LENGTH_LIMIT + 1000, '\0');
        int const length =
            std::snprintf(result.data(), result.size(), format, text, number, fraction);
        result.resize(static_cast<std::size_t>(length));
        return result;
    }

    static bool same(CString const & text, std::string const & model) {
        return text.GetLength() == intOf(model.size()) && text.IsEmpty() == model.empty() &&
               std::memcmp(text.GetString(), model.data(), model.size()) == 0 &&
               text.GetString()[model.size()] == '\0';
    }
    bool agrees() {
        for (Pair & each : pairs_) {
            if (!same(each.text, each.model)) {
                return false;
            }
            if (each.model.size() > LENGTH_LIMIT) {
                each.text.Empty();
                each.model.clear();
            }
        }
        return true;
    }

    // The operations: each does the same on both sides, and tells whether their answers agree.

    bool assign() {
        Pair & target = pair();
        Pair const & source = pair();
        target.text = source.text;
        target.model = std::string(source.model);
        return true;
    }
    bool move() {
        Pair & target = pair();
        Pair & source = pair();
        target.text = std::move(source.text);
        if (&target != &source) {
            target.model = std::exchange(source.model, std::string());
        }
        return true;
    }
    bool assignBytes() {
        Pair & target = pair();
        target.model = bytes();
        target.text = CString(target.model.data(), intOf(target.model.size()));
        return true;
    }
    bool assignText() {
        Pair & target = pair();
        target.model = textWithoutNul();
        target.text = target.model.c_str();
        return true;
    }
    bool assignRepeated() {
        Pair & target = pair();
        char const repeated = character();
        int const count = place();
        target.text = CString(repeated, count);
        target.model.assign(static_cast<std::size_t>(std::max(count, 0)), repeated);
        return true;
    }
    bool assignOwnTail() {
        Pair & target = pair();
        std::size_t const offset = offsetIn(target.model);
        target.text = target.text.GetString() + offset;
        target.model = std::string(target.model.c_str() + offset);
        return true;
    }
    bool append() {
        Pair & target = pair();
        Pair const & source = pair();
        target.text += source.text;
        target.model += std::string(source.model);
        return true;
    }
    bool appendCharacter() {
        Pair & target = pair();
        char const more = character();
        target.text.AppendChar(more);
        target.model += more;
        return true;
    }
    bool appendText() {
        Pair & target = pair();
        std::string const more = textWithoutNul();
        target.text += more.c_str();
        target.model += more;
        return true;
    }
    bool appendOwnBytes() {
        Pair & target = pair();
        std::size_t const offset = offsetIn(target.model);
        std::string const more = target.model.substr(offset, byte());
        target.text.Append(target.text.GetString() + offset, intOf(more.size()));
        target.model += more;
        return true;
    }
    bool appendOwnTail() {
        Pair & target = pair();
        std::size_t const offset = offsetIn(target.model);
        target.text.Append(target.text.GetString() + offset);
        target.model += std::string(target.model.c_str() + offset);
        return true;
    }
    bool insert() {
        Pair & target = pair();
        Pair const & source = pair();
        int const index = place();
        int const length = target.text.Insert(index, source.text);
        target.model.insert(insertPlace(target.model, index), std::string(source.model));
        return length == intOf(target.model.size());
    }
    bool insertCharacter() {
        Pair & target = pair();
        char const inserted = character();
        int const index = place();
        int const length = target.text.Insert(index, inserted);
        target.model.insert(insertPlace(target.model, index), 1, inserted);
        return length == intOf(target.model.size());
    }
    bool insertOwnTail() {
        Pair & target = pair();
        std::size_t const offset = offsetIn(target.model);
        int const index = place();
        int const length = target.text.Insert(index, target.text.GetString() + offset);
        target.model.insert(insertPlace(target.model, index),
                            std::string(target.model.c_str() + offset));
        return length == intOf(target.model.size());
    }
    bool setCharacter() {
        Pair & target = pair();
        char const character = this->character();
        if (!target.model.empty()) {
            std::size_t const index = byte() % target.model.size();
            target.text.SetAt(intOf(index), character);
            target.model[index] = character;
        }
        return true;
    }
    bool trim() {
        Pair & target = pair();
        target.text.Trim();
        target.model = trimmed(target.model);
        return true;
    }
    bool takeMiddle() {
        Pair & target = pair();
        Pair const & source = pair();
        int const first = place();
        int const count = place();
        target.text = source.text.Mid(first, count);
        target.model = middle(source.model, first, count);
        return true;
    }
    bool takeEnds() {
        Pair & target = pair();
        Pair const & source = pair();
        int const count = place();
        int const kept = std::clamp(count, 0, intOf(source.model.size()));
        CString const rest = source.text.Mid(count);
        CString const right = source.text.Right(count);
        std::string const modelRest = middle(source.model, count, intOf(source.model.size()));
        std::string const modelRight =
            source.model.substr(source.model.size() - static_cast<std::size_t>(kept));
        target.text = source.text.Left(count);
        target.model = middle(source.model, 0, count);
        return same(rest, modelRest) && same(right, modelRight);
    }
    bool add() {
        Pair & target = pair();
        Pair const & left = pair();
        Pair const & right = pair();
        std::string const text = textWithoutNul();
        char const single = character();
        target.text = single + (text.c_str() + (left.text + right.text) + text.c_str()) + single;
        target.model = single + (text + (left.model + right.model) + text) + single;
        return true;
    }
    bool find() {
        Pair const & source = pair();
        Pair const & wanted = pair();
        std::string const text = textWithoutNul();
        char const single = character();
        int const start = place();
        std::string const part = middle(source.model, place(), place() / 8);
        return source.text.Find(wanted.text, start) == find(source.model, wanted.model, start) &&
               source.text.Find(CString(part.data(), intOf(part.size())), start) ==
                   find(source.model, part, start) &&
               source.text.Find(text.c_str(), start) == find(source.model, text, start) &&
               source.text.Find(single, start) ==
                   find(source.model, std::string(1, single), start) &&
               source.text.ReverseFind(single) == positionOf(source.model.rfind(single));
    }
    bool compare() {
        Pair const & left = pair();
        Pair const & right = pair();
        int const order = signOf(left.model.compare(right.model));
        int const textOrder = signOf(left.model.compare(std::string(right.model.c_str())));
        return signOf(left.text.Compare(right.text)) == order &&
               signOf(left.text.Compare(right.text.GetString())) == textOrder &&
               signOf(left.text.CompareNoCase(right.text)) ==
                   signOf(lowered(left.model).compare(lowered(right.model))) &&
               (left.text == right.text) == (order == 0) &&
               (left.text != right.text) == (order != 0) &&
               (left.text < right.text) == (order < 0) &&
               (left.text >= right.text) == (order >= 0) &&
               (left.text > right.text.GetString()) == (textOrder > 0) &&
               (right.text.GetString() < left.text) == (textOrder > 0) &&
               (left.text <= right.text.GetString()) == (textOrder <= 0);
    }
    bool format() {
        Pair & target = pair();
        Pair const & source = pair();
        int const number = place();
        target.text.Format("<%s|%d|%.2f>", source.text.GetString(), number, number / 4.0);
        target.model = formatted("<%s|%d|%.2f>", source.model.c_str(), number, number / 4.0);
        return true;
    }
    bool appendFormat() {
        Pair & target = pair();
        Pair const & source = pair();
        int const number = place();
        target.text.AppendFormat("%s%%%04d%g", source.text.GetString(), number, number / 8.0);
        target.model += formatted("%s%%%04d%g", source.model.c_str(), number, number / 8.0);
        return true;
    }
    bool writeBuffer() {
        Pair & target = pair();
        std::string const written = bytes();
        char * const buffer = target.text.GetBuffer(intOf(written.size()));
        bool const kept = std::memcmp(buffer, target.model.c_str(), target.model.size() + 1) == 0;
        std::memcpy(buffer, written.data(), written.size());
        target.text.ReleaseBuffer(intOf(written.size()));
        target.model = written;
        return kept;
    }
    bool writeTextBuffer() {
        Pair & target = pair();
        std::string const written = textWithoutNul();
        std::memcpy(target.text.GetBuffer(intOf(written.size())), written.c_str(),
                    written.size() + 1);
        target.text.ReleaseBuffer();
        target.model = written;
        return true;
    }
    bool preallocate() {
        pair().text.Preallocate(place() * 8);
        return true;
    }
    bool empty() {
        Pair & target = pair();
        target.text.Empty();
        target.model.clear();
        return true;
    }

    static constexpr std::array OPERATIONS = {
        Operation{"assign", &CStringModel::assign},
        Operation{"move", &CStringModel::move},
        Operation{"assignBytes", &CStringModel::assignBytes},
        Operation{"assignText", &CStringModel::assignText},
        Operation{"assignRepeated", &CStringModel::assignRepeated},
        Operation{"assignOwnTail", &CStringModel::assignOwnTail},
        Operation{"append", &CStringModel::append},
        Operation{"appendCharacter", &CStringModel::appendCharacter},
        Operation{"appendText", &CStringModel::appendText},
        Operation{"appendOwnBytes", &CStringModel::appendOwnBytes},
        Operation{"appendOwnTail", &CStringModel::appendOwnTail},
        Operation{"insert", &CStringModel::insert},
        Operation{"insertCharacter", &CStringModel::insertCharacter},
        Operation{"insertOwnTail", &CStringModel::insertOwnTail},
        Operation{"setCharacter", &CStringModel::setCharacter},
        Operation{"trim", &CStringModel::trim},
        Operation{"takeMiddle", &CStringModel::takeMiddle},
        Operation{"takeEnds", &CStringModel::takeEnds},
        Operation{"add", &CStringModel::add},
        Operation{"find", &CStringModel::find},
        Operation{"compare", &CStringModel::compare},
        Operation{"format", &CStringModel::format},
        Operation{"appendFormat", &CStringModel::appendFormat},
        Operation{"writeBuffer", &CStringModel::writeBuffer},
        Operation{"writeTextBuffer", &CStringModel::writeTextBuffer},
        Operation{"preallocate", &CStringModel::preallocate},
        Operation{"empty", &CStringModel::empty},
    };

    unsigned char const * at_;
    unsigned char const * end_;
    std::array<Pair, 4> pairs_;
};

}  // namespace tvk::test
