#pragma once

/// The price that a chart is made of. Records carry the value and do not look at it.
enum PriceKindEnum : int {
    PRICEKIND_NONE = 0,  ///< not set
    PRICEKIND_LAST = 1,  ///< last traded price
    PRICEKIND_BID = 2,
    PRICEKIND_ASK = 3,
    PRICEKIND_MID = 4,  ///< between bid and ask
};
