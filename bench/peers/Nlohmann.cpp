#include <string>

#include <nlohmann/json.hpp>

#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

using Tree = nlohmann::json;

std::uint64_t sumOfValue(Tree const & value) {
    std::uint64_t sum = 0;
    switch (value.type()) {
        case Tree::value_t::object:
            sum = TreeSum::EMPTY_RECORD;
            for (auto const & [name, member] : value.get_ref<Tree::object_t const &>()) {
                sum += TreeSum::ofMember(name, sumOfValue(member));
            }
            return sum;
        case Tree::value_t::array:
            sum = TreeSum::EMPTY_LIST;
            for (Tree const & element : value) {
                sum = TreeSum::ofElement(sum, sumOfValue(element));
            }
            return sum;
        case Tree::value_t::string:
            return TreeSum::ofText(value.get_ref<std::string const &>());
        case Tree::value_t::boolean:
            return TreeSum::ofBoolean(value.get<bool>());
        case Tree::value_t::null:
            return 0;
        default:
            return TreeSum::ofNumber(value.get<double>());
    }
}

class TreeReader : public Reader {
public:
    void read(std::string_view document) override { Tree const tree = Tree::parse(document); }
    std::uint64_t sum(std::string_view document) override {
        return sumOfValue(Tree::parse(document));
    }
};

class TreeWriter : public Writer {
public:
    void load(std::vector<std::string_view> const & documents) override {
        for (std::string_view const document : documents) {
            trees_.push_back(Tree::parse(document));
        }
    }
    std::string_view write(std::size_t index) override { return text_ = trees_[index].dump(); }

private:
    std::vector<Tree> trees_;
    std::string text_;
};

}  // namespace

void addNlohmann(Peers & peers) {
    addPeer<TreeReader>(peers.readers, "nlohmann");
    addPeer<TreeWriter>(peers.writers, "nlohmann");
}

}  // namespace tvk::bench
