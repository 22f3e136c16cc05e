#pragma once

#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "modules/services/detail/AgentLink.h"
#include "modules/services/detail/Exchange.h"

namespace tvk::services {

template <class Kind>
class Requests;

/// The handle of a request. It knows the requests of its service as long as it is one of them.
template <class Kind>
class Operation : public Kind::Handle {
public:
    using Listener = typename Kind::Listener;

    Operation(Listener * listener, void * userObject)
        : listener_(listener), userObject_(userObject) {}
    Operation(Operation const &) = delete;
    Operation & operator=(Operation const &) = delete;

    void cancel() override {
        if (requests_ != nullptr) {
            requests_->cancel(static_cast<typename Kind::Operation *>(this));
        }
    }
    bool isCanceled() const override { return isCanceled_; }
    bool isPending() const override { return requests_ != nullptr; }

    Listener * listener() const { return listener_; }
    void * userObject() const { return userObject_; }

protected:
    ~Operation() override = default;

private:
    friend class Requests<Kind>;

    Listener * const listener_;
    void * const userObject_;
    Requests<Kind> * requests_ = nullptr;  // null behind the outcome
    unsigned long long id_ = 0;
    RefCountedPtr<Exchange> exchange_;
    bool isCanceled_ = false;
};

/// The pending requests of a service. Each is closed before its listener is told: whatever the
/// listener then cancels, stops or drops finds nothing to tell it a second time.
///
/// A Kind says what the services do not share: Service, Listener, Handle (the contract of handles),
/// Operation (derived from the template above), and ON_TIMEOUT, ON_CANCELED and ON_ERROR, the listener's
/// operations.
template <class Kind>
class Requests {
public:
    using Service = typename Kind::Service;
    using Listener = typename Kind::Listener;
    using OwnOperation = typename Kind::Operation;
    using OperationPtr = RefCountedPtr<OwnOperation>;
    /// Concludes or fails a request by its reply.
    using Reader = std::function<void(OwnOperation & operation, KestrinMessage const & reply)>;

    Requests(Service & service, AgentLink & link, Reader reader)
        : service_(service), link_(link), reader_(std::move(reader)) {}
    Requests(Requests const &) = delete;
    Requests & operator=(Requests const &) = delete;

    void ask(OperationPtr const & operation, RefCountedPtr<KestrinMessage> const & message) {
        operation->requests_ = this;
        operation->id_ = ++lastId_;
        pending_.emplace(operation->id_, operation);
        RefCountedPtr<Exchange> const exchange =
            link_.ask(message, [this, id = operation->id_](Outcome const & outcome) {
                auto const entry = pending_.find(id);
                if (entry != pending_.end()) {
                    take(OperationPtr(entry->second), outcome);
                }
            });
        if (operation->isPending()) {
            operation->exchange_ = exchange;
        } else {
            exchange->giveUp();  // cancelled by somebody whom the agent called meanwhile
        }
    }

    // The outcomes. Nothing where the request is not pending any more.

    void cancel(OperationPtr const & operation) {
        RefCountedPtr<Service> const alive(&service_);
        if (close(*operation)) {
            operation->isCanceled_ = true;
            tell(*operation, Kind::ON_CANCELED);
        }
    }
    void fail(OperationPtr const & operation, ErrorInfo const & error) {
        conclude(operation, Kind::ON_ERROR, error);
    }
    /// By one of the listener's operations.
    template <class Told, class... Arguments>
    void conclude(OperationPtr const & operation, Told told, Arguments const &... arguments) {
        RefCountedPtr<Service> const alive(&service_);
        if (close(*operation)) {
            tell(*operation, told, arguments...);
        }
    }

    /// Those that are pending now: what the callbacks ask for anew stays.
    void cancelAll() {
        endWhere([](OwnOperation const &) { return true; },
                 [this](OperationPtr const & operation) { cancel(operation); });
    }
    void cancelByListener(Listener const * listener) {
        endWhere([&](OwnOperation const & each) { return each.listener() == listener; },
                 [this](OperationPtr const & operation) { cancel(operation); });
    }
    /// With an error, or as cancelled where that is null.
    void endAll(ErrorInfo const * error) {
        if (error == nullptr) {
            cancelAll();
            return;
        }
        endWhere([](OwnOperation const &) { return true; },
                 [&](OperationPtr const & operation) { fail(operation, *error); });
    }

private:
    void take(OperationPtr const & operation, Outcome const & outcome) {
        switch (outcome.kind) {
            case Outcome::REPLIED:
                reader_(*operation, *outcome.reply);
                break;
            case Outcome::TIMED_OUT:
                conclude(operation, Kind::ON_TIMEOUT);
                break;
            case Outcome::CANCELED:
                cancel(operation);
                break;
            case Outcome::FAILED:
                fail(operation, outcome.error);
                break;
        }
    }

    bool close(OwnOperation & operation) {
        if (operation.requests_ != this) {
            return false;
        }
        operation.requests_ = nullptr;
        pending_.erase(operation.id_);
        if (RefCountedPtr<Exchange> const exchange = std::exchange(operation.exchange_, nullptr)) {
            exchange->giveUp();
        }
        return true;
    }

    template <class Told, class... Arguments>
    void tell(OwnOperation & operation, Told told, Arguments const &... arguments) {
        if (Listener * const listener = operation.listener()) {
            (listener->*told)(&service_, &operation, arguments..., operation.userObject());
        }
    }

    template <class Condition, class End>
    void endWhere(Condition const & condition, End const & end) {
        RefCountedPtr<Service> const alive(&service_);
        std::vector<OperationPtr> operations;
        for (auto const & entry : pending_) {
            if (condition(*entry.second)) {
                operations.push_back(entry.second);
            }
        }
        for (OperationPtr const & operation : operations) {
            end(operation);
        }
    }

    Service & service_;
    AgentLink & link_;
    Reader const reader_;
    std::map<unsigned long long, OperationPtr> pending_;  // in the order of asking
    unsigned long long lastId_ = 0;
};

}  // namespace tvk::services
