#pragma once

#include <map>
#include <string>
#include <vector>

#include "tvk/platform/CString.h"

namespace inprocess {

/// What a back end answers to requests of one message type.
struct Answer {
    enum Outcome { SUCCESS, FAILURE, SILENCE };

    int milliSeconds = 0;  ///< from the request to the reply
    std::string body;      ///< JSON in UTF-8; of a failure with the fields code, text and network
    Outcome outcome = SUCCESS;
};

/// What a back end pushes to whoever subscribed to this type and subject.
struct Push {
    CString type;
    CString subject;
    int milliSeconds = 0;  ///< from the subscription to the notice
    std::string body;      ///< JSON in UTF-8
};

/// All that a back end has to say.
struct AnswerTable {
    std::map<CString, Answer> answers;  ///< by the message type identifier of the request
    std::vector<Push> pushes;
};

/// A broker's back end in a few lines; the program's.
AnswerTable tradingAnswers();

}  // namespace inprocess
