#pragma once

#include <gtest/gtest.h>

#include "tests/support/Recorded.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk::test {

/// A contract that adds operations to RefCounted and nothing else copies and assigns as that does.
/// Requires: Double(Log &) is a class that implements it.
template <class Contract, class Double>
void expectCopiesLikeRefCounted() {
    Log log;
    RefCountedPtr<Double> const source(new Double(log));
    RefCountedPtr<Double> const second = source;
    auto * const unowned = new Double(*source);
    EXPECT_EQ(unowned->getRefCount(), 0);
    RefCountedPtr<Contract> const target(unowned);
    *target = static_cast<Contract const &>(*source);
    EXPECT_EQ(target->getRefCount(), 2);
    target->removeRef();
    EXPECT_EQ(source->getRefCount(), 2);
    EXPECT_EQ(log, Log{});
}

}  // namespace tvk::test
