#include "examples/catalogue/References.h"

#include <algorithm>
#include <map>
#include <utility>

namespace {

using tvk::DataTypeDef;

constexpr std::size_t SHOWN_TYPES = 8;

/// Which type refers to which, and the walk from type to type. It does not recurse: how deep the
/// types of a file stand inside each other is only known at its end.
class TypeGraph {
public:
    explicit TypeGraph(Complaints & complaints) : complaints_(complaints) {}

    void connect(DataTypeDef const * from, std::string const & place, DataTypeDef const * to) {
        nodes_[from].edges.push_back({&place, to});
    }

    /// Walks from a type to all that it refers to, unless an earlier walk came by.
    void walkFrom(DataTypeDef const * start) {
        if (nodes_[start].state == UNSEEN) {
            enter(start);
        }
        while (!path_.empty()) {
            Node & node = nodes_[path_.back()];
            if (node.next == node.edges.size()) {
                leave(node);
            } else {
                follow(node, node.edges[node.next]);
            }
        }
    }

private:
    enum State { UNSEEN, OPEN, DONE };

    struct Edge {
        std::string const * place;
        DataTypeDef const * to;
    };

    struct Node {
        State state = UNSEEN;
        std::size_t place = 0;  ///< on the path, while it is open
        int depth = 1;          ///< of the types inside each other here, this one included
        std::size_t next = 0;
        std::vector<Edge> edges;
    };

    void enter(DataTypeDef const * type) {
        Node & node = nodes_[type];
        node.state = OPEN;
        node.place = path_.size();
        path_.push_back(type);
    }

    void leave(Node & node) {
        node.state = DONE;
        path_.pop_back();
    }

    void follow(Node & node, Edge const & edge) {
        Node const & target = nodes_[edge.to];
        if (target.state == UNSEEN) {
            enter(edge.to);  // and back to this edge when that type is done
            return;
        }
        if (target.state == OPEN) {
            complaints_.add(*edge.place, "a cycle of types: " + cycleFrom(target.place));
        } else if (target.depth == References::MAX_DEPTH) {
            complaints_.add(*edge.place, "more than " + std::to_string(References::MAX_DEPTH) +
                                             " types inside each other");
        }
        node.depth = std::max(node.depth, target.depth + 1);
        ++node.next;
    }

    /// The open types from a place of the path on, and the first of them once more.
    std::string cycleFrom(std::size_t first) const {
        std::string names;
        for (std::size_t at = first; at < path_.size(); ++at) {
            if (at - first == SHOWN_TYPES) {
                names += "... -> ";
                break;
            }
            names += quoted(path_[at]->getName()) + " -> ";
        }
        return names + quoted(path_[first]->getName());
    }

    Complaints & complaints_;
    std::map<DataTypeDef const *, Node> nodes_;
    std::vector<DataTypeDef const *> path_;  // the open types, each of which refers to the next
};

}  // namespace

void References::add(std::string place, DataTypeDef const * from, CString const & typeName,
                     Setter set) {
    references_.push_back({std::move(place), from, typeName, std::move(set)});
}

void References::check(tvk::DataTypeDefManager const & types, Complaints & complaints) const {
    TypeGraph graph(complaints);
    for (Reference const & reference : references_) {
        DataTypeDef const * const type = types.getDataTypeDefByName(reference.typeName);
        if (type == nullptr) {
            complaints.add(reference.place, "unknown type " + quoted(reference.typeName));
        } else if (reference.from) {
            graph.connect(reference.from.get(), reference.place, type);
        }
    }
    for (Reference const & reference : references_) {
        if (reference.from) {
            graph.walkFrom(reference.from.get());
        }
    }
}

void References::resolve(tvk::DataTypeDefManager const & types) const {
    for (Reference const & reference : references_) {
        reference.set(types.getDataTypeDefByName(reference.typeName));
    }
}
