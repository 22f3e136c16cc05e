#pragma once

#include "tvk/definitions/detail/RecordDef.h"

namespace tvk {

/// A record type that a loader fills.
class TVK_API RecordTypeDefImpl : public detail::RecordDef {
public:
    RecordTypeDefImpl();
    RecordTypeDefImpl(char const * name, char const * nameJa, char const * description);

private:
    ~RecordTypeDefImpl() override;
};

}  // namespace tvk
