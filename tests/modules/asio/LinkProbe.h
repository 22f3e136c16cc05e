#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "modules/asio/TcpOptions.h"
#include "modules/asio/detail/Link.h"
#include "tests/modules/asio/Driven.h"
#include "tvk/errors/ErrorInfo.h"

/// A Link that keeps what it tells. It reads on by itself.
class LinkProbe {
public:
    LinkProbe(tvk::EventLoop & loop, tvk::TcpOptions const & options, std::size_t roomSize = 1000)
        : loop_(loop), room_(roomSize) {
        link_ = std::make_unique<tvk::Link>(loop, options, events());
    }

    tvk::Link & link() { return *link_; }
    void destroy() { link_.reset(); }

    void open() {
        Inside const inside(inside_);
        link_->open();
    }
    bool openAndWait() {
        open();
        return driveUntil(loop_, [this] { return opened() || failed(); }) && opened();
    }
    void readOn() {
        Inside const inside(inside_);
        link_->read(room_.data(), room_.size());
    }
    void write(std::string text) {
        Inside const inside(inside_);
        outgoing_ = std::move(text);
        link_->write(outgoing_.data(), outgoing_.size());
    }
    bool writeAndWait(std::string text) {
        int const before = written_;
        write(std::move(text));
        return driveUntil(loop_, [&] { return written_ > before || failed(); }) &&
               written_ > before;
    }
    bool waitForBytes(std::size_t count) {
        return driveUntil(loop_, [&] { return bytes_.size() >= count || failed(); }) &&
               bytes_.size() >= count;
    }
    bool waitForFailure() {
        return driveUntil(loop_, [this] { return failed(); });
    }

    bool opened() const { return openedCount_ > 0; }
    bool failed() const { return !errors_.empty(); }
    std::string const & bytes() const { return bytes_; }
    tvk::ErrorInfo const & error() const { return errors_.front(); }
    int eventCount() const { return eventCount_; }
    bool eventFromInside() const { return eventFromInside_; }

    std::function<void()> onEvent = [] {};  ///< behind each event is noted
    bool readsOn = true;

private:
    /// While it lives, an event would come from inside a call of the Link.
    class Inside {
    public:
        explicit Inside(bool & flag) : flag_(flag) { flag_ = true; }
        ~Inside() { flag_ = false; }

        Inside(Inside const &) = delete;
        Inside & operator=(Inside const &) = delete;

    private:
        bool & flag_;
    };

    tvk::Link::Events events() {
        return {[this] {
                    ++openedCount_;
                    note();
                    if (link_ != nullptr && readsOn) {
                        readOn();
                    }
                },
                [this](std::size_t count) {
                    bytes_.append(room_.data(), count);
                    note();
                    if (link_ != nullptr && readsOn) {
                        readOn();
                    }
                },
                [this] {
                    ++written_;
                    note();
                },
                [this](tvk::ErrorInfo const & error) {
                    errors_.push_back(error);
                    note();
                }};
    }

    void note() {
        ++eventCount_;
        eventFromInside_ = eventFromInside_ || inside_;
        onEvent();
    }

    tvk::EventLoop & loop_;
    std::vector<char> room_;
    std::string outgoing_;
    std::string bytes_;
    std::vector<tvk::ErrorInfo> errors_;
    int openedCount_ = 0;
    int written_ = 0;
    int eventCount_ = 0;
    bool inside_ = false;
    bool eventFromInside_ = false;
    std::unique_ptr<tvk::Link> link_;
};
