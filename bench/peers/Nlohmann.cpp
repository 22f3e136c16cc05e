#include <string>

#include <nlohmann/json.hpp>

#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

template <class Tree>
std::uint64_t sumOfValue(Tree const & value) {
    std::uint64_t sum = 0;
    switch (value.type()) {
        case nlohmann::detail::value_t::object:
            sum = TreeSum::EMPTY_RECORD;
            for (auto const & [name, member] :
                 value.template get_ref<typename Tree::object_t const &>()) {
                sum += TreeSum::ofMember(name, sumOfValue(member));
            }
            return sum;
        case nlohmann::detail::value_t::array:
            sum = TreeSum::EMPTY_LIST;
            for (Tree const & element : value) {
                sum = TreeSum::ofElement(sum, sumOfValue(element));
            }
            return sum;
        case nlohmann::detail::value_t::string:
            return TreeSum::ofText(value.template get_ref<std::string const &>());
        case nlohmann::detail::value_t::boolean:
            return TreeSum::ofBoolean(value.template get<bool>());
        case nlohmann::detail::value_t::null:
            return 0;
        default:
            return TreeSum::ofNumber(value.template get<double>());
    }
}

template <class Tree>
class TreeReader : public Reader {
public:
    void read(std::string_view document) override { Tree const tree = Tree::parse(document); }
    std::uint64_t sum(std::string_view document) override {
        return sumOfValue(Tree::parse(document));
    }
};

template <class Tree>
class TreeKeeper : public Keeper {
public:
    void reserve(std::size_t messages) override { trees_.reserve(messages); }
    void add(std::string_view document) override { trees_.push_back(Tree::parse(document)); }
    std::uint64_t sum(std::size_t index) override { return sumOfValue(trees_[index]); }

private:
    std::vector<Tree> trees_;
};

template <class Tree>
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

/// nlohmann::json keeps its members in a std::map, ordered_json in a vector.
template <class Tree>
void addTree(Peers & peers, std::string const & name) {
    addPeer<TreeReader<Tree>>(peers.readers, name);
    addPeer<TreeKeeper<Tree>>(peers.keepers, name);
    addPeer<TreeWriter<Tree>>(peers.writers, name);
}

}  // namespace

void addNlohmann(Peers & peers) {
    addTree<nlohmann::json>(peers, "nlohmann");
    addTree<nlohmann::ordered_json>(peers, "nlohmann_ordered");
    peers.libraries.push_back("nlohmann/json " +
                              nlohmann::json::meta()["version"]["string"].get<std::string>());
}

}  // namespace tvk::bench
