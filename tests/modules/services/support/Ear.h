#pragma once

#include <functional>
#include <string>
#include <utility>

#include "tests/support/Recorded.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk::test {

/// What the listeners of the tests have in common: each writes what it hears into a log, with its
/// name in front, and then does what the test wants.
template <class Service>
class Ear {
public:
    /// `log` must outlive the ear.
    Ear(Log & log, std::string name) : log_(log), name_(std::move(name)) {}

    std::function<void()> during;  ///< runs inside each callback
    Service * service = nullptr;   ///< of the last callback

protected:
    void hear(Service * from, std::string const & what) {
        service = from;
        log_.push_back(name_ + ' ' + what);
        if (during) {
            auto const now = during;  // may be changed from inside
            now();
        }
    }

private:
    Log & log_;
    std::string const name_;
};

/// One that hears of requests too.
template <class Service, class Operation>
class RequestEar : public Ear<Service> {
public:
    using Ear<Service>::Ear;

    // Of the last outcome.
    RefCountedPtr<Operation> operation;
    void * userObject = nullptr;
    bool wasPending = false;
    int component = -1;  ///< of the last error

protected:
    void hearOutcome(Service * from, Operation * about, std::string const & what, void * user) {
        operation = about;
        userObject = user;
        wasPending = about->isPending();
        this->hear(from, what);
    }
};

}  // namespace tvk::test
