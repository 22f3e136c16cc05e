#pragma once

// All that the scanner's headers include in their turn, vector instructions aside: a source that has
// them between TVK_BEGIN_TARGET and TVK_END_TARGET includes this before.

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

#include "tvk/json/JsonOptions.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/json/detail/BitPlaces.h"
#include "tvk/json/detail/HashPowers.h"
#include "tvk/json/detail/JsonSpace.h"
#include "tvk/json/detail/Scan.h"
#include "tvk/json/detail/ScannerErrors.h"
#include "tvk/platform/Processor.h"
#include "tvk/platform/TargetCode.h"
