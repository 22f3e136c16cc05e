#pragma once

#include "examples/desk/model/AlertModel.h"
#include "examples/desk/model/ChartModel.h"
#include "examples/desk/model/LoginModel.h"
#include "examples/desk/model/NewsListModel.h"
#include "examples/desk/model/OrderListModel.h"
#include "examples/desk/model/OrderTicketModel.h"
#include "examples/desk/model/QuoteBoardModel.h"
#include "examples/desk/model/StatusModel.h"

namespace desk {

/// All that the window shows. The feeds write it, the window reads it, both on one thread.
struct Models {
    LoginModel login;
    QuoteBoardModel board;
    OrderTicketModel ticket;
    OrderListModel orders;
    ChartModel chart;
    NewsListModel news;
    StatusModel status;
    AlertModel alerts;
};

}  // namespace desk
