#pragma once

#include "bench/Corpus.h"

namespace tvk::bench {

/// XML documents, made up and always the same.
Corpus const & xmlFeed();     ///< one RSS feed: elements with text, some of it Japanese
Corpus const & xmlOrders();   ///< one message of many executions: attributes, no text
Corpus const & xmlReplies();  ///< small SOAP replies, each a document: namespaces with prefixes

}  // namespace tvk::bench
