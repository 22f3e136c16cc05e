#pragma once

#include "bench/Corpus.h"

namespace tvk::bench {

/// Texts for the conversions and decoders, cut from the corpora. All have a place in the code page
/// 932, and both ways of conversion lead back.
Corpus const & japaneseText();  ///< one long text, names of shares alone
Corpus const & mixedText();     ///< lines of messages: much ASCII, some Japanese
Corpus const & shortTexts();    ///< names of shares, one by one

}  // namespace tvk::bench
