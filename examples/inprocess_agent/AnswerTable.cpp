#include "examples/inprocess_agent/AnswerTable.h"

namespace inprocess {

AnswerTable tradingAnswers() {
    AnswerTable table;
    table.answers = {
        {"login",
         {20, R"({"code":"0","text":"welcome","time":1388620800000,)"
              R"("startup":{"account":"125-1905946","name":"青葉 花子"}})"}},
        {"heartbeat", {2, "{}"}},
        {"order", {40, R"({"orderId":"20140102000042","status":"accepted","accepted":true})"}},
        {"balance", {15, R"({"cash":1250000,"ccy":"JPY"})"}},
        {"history", {0, "", Answer::SILENCE}},
        {"ranking", {60, R"({"top":["3622","IDXF.1409"]})"}},
        {"margin",
         {10, R"({"code":18,"text":"closed for maintenance","network":false})", Answer::FAILURE}},
    };
    table.pushes = {
        {"quote", "3622", 10, R"({"sym":"3622","name":"青葉化学工業","last":327})"},
        {"quote", "IDXF.1409", 15, R"({"sym":"IDXF.1409","last":14790})"},
        {"quote", "3622", 30, R"({"sym":"3622","name":"青葉化学工業","last":328})"},
        {"quote", "3622", 90, R"({"sym":"3622","name":"青葉化学工業","last":326})"},
    };
    return table;
}

}  // namespace inprocess
