#include "tvk/agent/ThreadPool.h"

namespace tvk {

ThreadPool::Task::~Task() = default;

ThreadPool::~ThreadPool() = default;

}  // namespace tvk
