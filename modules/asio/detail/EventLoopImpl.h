#pragma once

#include <asio/any_io_executor.hpp>
#include <functional>

#include "modules/asio/EventLoop.h"

namespace tvk {

/// What stands behind an EventLoop.
class EventLoop::Impl {
public:
    virtual ~Impl() = default;

    Impl(Impl const &) = delete;
    Impl & operator=(Impl const &) = delete;

    /// What sockets and timers are made with: their handlers run on the thread that drives.
    virtual asio::any_io_executor executor() = 0;
    virtual void post(std::function<void()> function) = 0;
    virtual bool pollOne() = 0;
    virtual bool runOne() = 0;
    virtual void beginDrive() = 0;
    virtual void endDrive() = 0;

protected:
    Impl() = default;
};

}  // namespace tvk
