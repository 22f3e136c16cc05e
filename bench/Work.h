#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tvk/platform/CString.h"
#include "tvk/platform/TimeVal.h"
#include "tvk/values/FieldValue.h"
#include "tvk/values/RefCountedPtr.h"

/// The works that are measured, each as an interface that tvk and its peers stand behind. A call
/// covers a whole document or list, so that the virtual call does not show.
namespace tvk::bench {

/// Makes a compiler believe that somebody looks at the value.
template <class Value>
inline void keep(Value const & value) {
    asm volatile("" : : "g"(&value) : "memory");
}

/// The hash that a cache of values wants: the scanner's own. Peers run this loop over their texts.
inline std::uint32_t hashOf(char const * text, std::size_t length) {
    std::uint32_t hash = 1402737925;
    for (std::size_t i = 0; i < length; ++i) {
        hash = hash * 33 + static_cast<std::uint32_t>(static_cast<signed char>(text[i]));
    }
    return hash;
}

/// The same, for a parser that does not leave the text in one terminated piece by itself.
inline std::uint32_t copyAndHash(char * output, char const * text, std::size_t length,
                                 std::uint32_t hash = 1402737925) {
    for (std::size_t i = 0; i < length; ++i) {
        output[i] = text[i];
        hash = hash * 33 + static_cast<std::uint32_t>(static_cast<signed char>(text[i]));
    }
    return hash;
}

/// What a scan tells, in little time. The mix holds the order of all events, the lengths of the
/// names and the hashes of strings and numbers.
struct EventSum {
    std::uint64_t mix = 0;
    std::uint64_t events = 0;
    std::uint64_t textBytes = 0;

    void add(std::uint32_t what, std::size_t length = 0) {
        mix = std::rotl(mix, 5) ^ what;
        ++events;
        textBytes += length;
    }
    void startObject() { add(1); }
    void endObject() { add(2); }
    void startArray() { add(3); }
    void endArray() { add(4); }
    void name(std::size_t length) { add(5 + static_cast<std::uint32_t>(length) * 8, length); }
    void string(std::uint32_t hash, std::size_t length) { add(hash ^ 0x10000000U, length); }
    void number(std::uint32_t hash, std::size_t length) { add(hash ^ 0x20000000U, length); }
    void boolean(bool value) { add(value ? 6 : 7); }
    void null() { add(8); }
};

/// Bytes to events: every name and string decoded; with hashes, in one piece, and every string value
/// and number hashed.
class Scanner {
public:
    virtual ~Scanner() = default;
    virtual void scan(std::string_view document, EventSum & sum) = 0;
};

/// What a tree holds, whatever order its members come in. Nulls do not count: tvk's messages hold
/// none. Numbers count as floats, since not all readers round the last bit of a double alike.
class TreeSum {
public:
    static std::uint64_t ofText(std::string_view text);
    static std::uint64_t ofNumber(double value);
    static std::uint64_t ofBoolean(bool value);
    static std::uint64_t ofMember(std::string_view name, std::uint64_t value);
    /// Sums of 0 stand for nulls and do not enter.
    static std::uint64_t ofElement(std::uint64_t before, std::uint64_t value);
    static constexpr std::uint64_t EMPTY_LIST = 0x9E3779B97F4A7C15U;
    static constexpr std::uint64_t EMPTY_RECORD = 0xC2B2AE3D27D4EB4FU;
};

/// Text to a tree, and the end of that tree.
class Reader {
public:
    virtual ~Reader() = default;
    /// Called before it is used behind other peers.
    virtual void begin() {}
    virtual void read(std::string_view document) = 0;
    /// True: takes a pool for all documents beforehand.
    virtual bool hasSizedPool() const { return false; }
    /// The sum of the document's tree.
    virtual std::uint64_t sum(std::string_view document) = 0;
};

/// Messages that are kept.
class Keeper {
public:
    virtual ~Keeper() = default;
    virtual void reserve(std::size_t messages) = 0;
    virtual void add(std::string_view document) = 0;
    /// Gives back what only reading needs. No call of add follows.
    virtual void endFeed() {}
    /// The sum of a message's tree.
    virtual std::uint64_t sum(std::size_t index) = 0;
};

/// Trees to text.
class Writer {
public:
    virtual ~Writer() = default;
    /// Called before it is used behind other peers.
    virtual void begin() {}
    /// Builds the trees, which are kept.
    virtual void load(std::vector<std::string_view> const & documents) = 0;
    /// The text of one of them, which holds until the next call.
    virtual std::string_view write(std::size_t index) = 0;
};

/// The key of an interning table.
struct TextKey {
    std::string_view text;
    std::uint32_t hash;
};

using ValuePtr = RefCountedPtr<FieldValue>;

/// Key to shared value. All peers return a counted pointer.
class Interner {
public:
    virtual ~Interner() = default;
    virtual void insert(TextKey const & key, ValuePtr const & value) = 0;
    /// How many of the keys were found: looks them all up, one after the other.
    virtual std::size_t findAll(std::span<TextKey const> keys) = 0;
};

/// Conversion between the code page 932 and UTF-8. Results hold until the next call.
class CodePageConverter {
public:
    virtual ~CodePageConverter() = default;
    virtual std::string_view toCodePage(std::string_view utf8) = 0;
    virtual std::string_view toUtf8(std::string_view text) = 0;
};

/// UTF-8 to code points.
class Utf8Decoder {
public:
    virtual ~Utf8Decoder() = default;
    /// The sum of all code points, decoded one by one.
    virtual std::uint64_t decode(std::string_view text) = 0;
    /// False: has no count of its own.
    virtual bool counts() const { return true; }
    virtual std::size_t count(std::string_view text) = 0;
};

/// A function of one item.
template <class Item, class Result>
class ItemWork {
public:
    virtual ~ItemWork() = default;
    /// What the peers are compared by.
    virtual Result resultOf(Item const & item) = 0;
    /// What is timed: makes the result of each item and drops it.
    virtual void runAll(std::span<Item const> items) = 0;
};

/// Bytes to base64, or to hexadecimal digits.
using Encoder = ItemWork<std::string_view, std::string>;

/// Text to what may stand in the query of a URL, or back.
using PercentCoder = ItemWork<std::string_view, std::string>;

/// "2014/01/02 03:04:05.678" as local time to microseconds since the epoch, and back. A NUL stands
/// behind the text that is read.
using DateParser = ItemWork<std::string_view, std::int64_t>;
using DateFormatter = ItemWork<timeval, std::string>;

/// AES with the key CIPHER_KEY. A block is encrypted or decrypted in place, each time the one that the last
/// time gave, whatever the item.
using AesBlockWork = ItemWork<std::string_view, std::string>;

/// CBC of whole blocks with the same key: a text to 16 bytes that start its chain, of the peer's choice, and the
/// blocks of the chain; or back.
using AesChainWork = ItemWork<std::string_view, std::string>;

/// A key to its schedules of both directions. Compared by what they make of a block of zeros.
using AesKeyWork = ItemWork<std::string_view, std::string>;

constexpr std::string_view CIPHER_KEY = "sixteen bytes of";

/// A text to split, in the types that each side has for it.
struct SplitTask {
    std::string text;
    std::string delimiter;
    CString tvkText;
    CString tvkDelimiter;
};

using Splitter = ItemWork<SplitTask, std::vector<std::string>>;

/// What a notice is about, in the types that each side has for it.
struct Topic {
    std::string type;
    std::string subject;
    CString tvkType;
    CString tvkSubject;
};

/// Stands for every type, or every subject, where a handler is registered.
inline std::string const ANY = "*";

/// Who was called, and in which order, in little time.
struct CallSum {
    std::uint64_t mix = 0;
    std::uint64_t calls = 0;

    void add(std::uint32_t who) {
        mix = (std::rotl(mix, 5) ^ who) * 0x9E3779B97F4A7C15U;
        ++calls;
    }
    bool operator==(CallSum const &) const = default;
};

/// Notices to the handlers of their topics: to those of any type and subject first, then to those of
/// the type, then to those of the subject, then to the exact ones.
class NoticeRouter {
public:
    virtual ~NoticeRouter() = default;
    /// `handler` is called behind those that the topic has already.
    virtual void addHandler(Topic const & topic, std::uint32_t handler) = 0;
    /// Delivers a notice of each topic.
    virtual CallSum deliverAll(std::span<Topic const> topics) = 0;
};

/// Events to all listeners, in the order of their addition.
class EventSource {
public:
    virtual ~EventSource() = default;
    virtual void addListener(std::uint32_t listener) = 0;
    virtual CallSum fire(std::size_t events) = 0;
};

/// What the handlers at the end of a road are told, in little time.
class NoticeSink {
public:
    virtual ~NoticeSink() = default;
    /// One call for each handler of the notice of this number.
    virtual void told(std::uint64_t number, double price) = 0;
};

/// A whole client: connection, frames, JSON, tables of handlers and of open requests, in one thread.
class Road {
public:
    virtual ~Road() = default;
    /// Registers a handler for each topic in this order, logs in, and starts the real-time service.
    virtual void connect(unsigned short port, std::vector<Topic> const & keys,
                         NoticeSink & sink) = 0;
    /// Serves the connection until the handlers were called so many times more.
    virtual void receive(std::uint64_t calls) = 0;
    /// Asks for so many echoes, each of its number, of which as many are under way at a time as `open`
    /// tells. The sum of the numbers that came back.
    virtual std::uint64_t ask(std::uint64_t requests, std::uint64_t open) = 0;
};

/// A path of names below the root of the XML feed, in the types that each side has for it. The result is the
/// text of the first element there.
struct XmlPathTask {
    std::string path;
    CString tvkPath;
};

using XmlPathFinder = ItemWork<XmlPathTask, std::string>;

/// A way to do a work, by name. `make` is called whenever its row is run.
template <class Work>
struct Peer {
    std::string name;
    std::unique_ptr<Work> (*make)();
    /// True: keeps only texts of the code page 932, so it sits out the corpora that hold others.
    bool japaneseOnly = false;
};

/// The first of each work is tvk's, which all others must agree with before they are timed.
struct Peers {
    std::vector<Peer<Scanner>> scanners;
    std::vector<Peer<Scanner>> plainScanners;  ///< need not hash
    std::vector<Peer<Reader>> readers;
    std::vector<Peer<Keeper>> keepers;
    std::vector<Peer<Writer>> writers;
    std::vector<Peer<Interner>> interners;
    std::vector<Peer<Interner>> hashingInterners;  ///< are given no hash; tvk is, by its scanner
    std::vector<Peer<CodePageConverter>> codePageConverters;
    std::vector<Peer<Utf8Decoder>> utf8Decoders;
    std::vector<Peer<Encoder>> base64Encoders;
    std::vector<Peer<Encoder>> hexEncoders;
    std::vector<Peer<PercentCoder>> percentEncoders;
    std::vector<Peer<PercentCoder>> percentDecoders;
    std::vector<Peer<DateParser>> dateParsers;
    std::vector<Peer<DateFormatter>> dateFormatters;
    std::vector<Peer<Splitter>> splitters;
    std::vector<Peer<AesBlockWork>> aesEncryptions;
    std::vector<Peer<AesBlockWork>> aesDecryptions;
    std::vector<Peer<AesChainWork>> cbcEncryptions;
    std::vector<Peer<AesChainWork>> cbcDecryptions;
    std::vector<Peer<AesKeyWork>> aesKeys;
    std::vector<Peer<NoticeRouter>> noticeRouters;
    std::vector<Peer<EventSource>> eventSources;
    std::vector<Peer<Reader>> xmlReaders;  ///< empty where tvk has no XML parser
    std::vector<Peer<XmlPathFinder>> xmlPathFinders;
    std::vector<Peer<Road>> roads;       ///< empty where tvk has no agent over TCP
    std::vector<std::string> libraries;  ///< names and versions
};

inline std::string dotted(int major, int minor, int revision) {
    return std::to_string(major) + '.' + std::to_string(minor) + '.' + std::to_string(revision);
}

template <class Implementation, class Work>
void addPeer(std::vector<Peer<Work>> & peers, std::string name, bool japaneseOnly = false) {
    peers.push_back({std::move(name),
                     []() -> std::unique_ptr<Work> { return std::make_unique<Implementation>(); },
                     japaneseOnly});
}

}  // namespace tvk::bench
