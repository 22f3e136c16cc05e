#include "examples/desk/feed/OrderFeed.h"

#include "examples/desk/Text.h"
#include "examples/desk/feed/Container.h"
#include "examples/desk/feed/Report.h"
#include "examples/desk/model/ErrorText.h"
#include "examples/support/Messages.h"

namespace desk {

namespace {

constexpr char ORDER[] = "order";

}  // namespace

OrderFeed::~OrderFeed() { stop(); }

void OrderFeed::start(std::string const & loginId) {
    stop();
    subject_ = ansi(loginId);
    agent().addMessageHandler(ORDER, subject_, this);
    agent().subscribe(ORDER, subject_);
}

void OrderFeed::stop() {
    asker_.cancelAll();
    if (!subject_.IsEmpty()) {
        agent().unsubscribe(ORDER, subject_);
        agent().removeMessageHandler(ORDER, subject_, this);
        subject_.Empty();
    }
}

void OrderFeed::place(OrderInput const & input) {
    if (models_.ticket.isUnderWay()) {
        return;
    }
    if (auto const problem = models_.ticket.problemOf(input)) {
        return models_.ticket.refuse(*problem);
    }
    send(OrderTicketModel::orderOf(input));
}

void OrderFeed::cancel(std::string const & orderId) {
    auto const request = requestOfType("orderCancel");
    request->setFieldValue("orderId", ansi(orderId));
    asker_.ask(request, [this](tvk::KestrinMessage const * reply, tvk::ErrorInfo const & error) {
        if (reply == nullptr) {
            report(models_.alerts, error);
        }
    });
}

void OrderFeed::send(Order const & order) {
    models_.ticket.sent(order);
    asker_.ask(OrderTicketModel::messageOf(order),
               [this, order](tvk::KestrinMessage const * reply, tvk::ErrorInfo const & error) {
                   if (reply == nullptr) {
                       models_.ticket.takeFailure(errorText(error));
                       return;
                   }
                   models_.ticket.takeReply(*reply);
                   models_.orders.takeReply(order, *reply);
               });
}

void OrderFeed::onNotice(tvk::Kestrin * /*agent*/,
                         tvk::RefCountedPtr<tvk::KestrinMessage> const & notice) {
    models_.orders.takeNotice(*notice);
}

}  // namespace desk
