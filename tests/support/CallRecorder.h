#pragma once

#include "tests/support/CallText.h"
#include "tests/support/Recorded.h"

namespace tvk::test {

/// Second base of a double that writes each call it gets into a log, which must outlive it.
class CallRecorder {
protected:
    explicit CallRecorder(Log & log) : log_(&log) {}

    template <class... Arguments>
    void record(char const * operation, Arguments const &... arguments) const {
        log_->push_back(callText(operation, arguments...));
    }

private:
    Log * log_;
};

}  // namespace tvk::test
