#pragma once

/// What a message is. A header nobody has set holds 0, which counts as a request wherever the kind
/// is only told from a reply and a notice.
enum MessageKindEnum : int { MSGKIND_REQUEST = 1, MSGKIND_REPLY = 2, MSGKIND_NOTICE = 3 };
