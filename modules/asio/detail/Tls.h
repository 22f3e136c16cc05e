#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "tvk/errors/ErrorInfo.h"
#include "tvk/platform/CString.h"

namespace tvk {

struct TcpOptions;

/// The client's side of TLS, 1.2 at least, over bytes that somebody else carries: what comes from the
/// other side goes in by addInput, what is for the other side is fetched by takeOutput, behind each call
/// of another operation.
///
/// Trust:   the other side must show a certificate for the host of the options, a name or an address,
///          that leads to an authority in the certificate file of the options, or to one of the system's
///          where they name no file.
/// Failure: FAILED, with the error as it stands in error(); from then on everything gives it.
class TlsClient {
public:
    enum class Result { DONE, NEEDS_INPUT, CLOSED, FAILED };

    explicit TlsClient(TcpOptions const & options);
    ~TlsClient();

    TlsClient(TlsClient const &) = delete;
    TlsClient & operator=(TlsClient const &) = delete;

    void addInput(char const * bytes, std::size_t size);
    std::size_t outputSize() const;
    /// Replaces the content of `output` by all there is for the other side.
    void takeOutput(std::vector<char> * output);

    Result handshake();
    /// CLOSED where the other side said that it sends no more.
    Result read(char * room, std::size_t size, std::size_t * count);
    /// Takes a part, *count bytes of it.
    Result write(char const * bytes, std::size_t size, std::size_t * count);
    /// Tells the other side that no more is sent.
    void finish();

    /// In the domain ErrorDomain_SSL.
    ErrorInfo const & error() const { return error_; }

private:
    struct Handles;

    Result resultOf(int returned);
    Result failed(CString const & text, long code);
    bool prepare(TcpOptions const & options);

    std::unique_ptr<Handles> handles_;
    bool failed_ = false;
    ErrorInfo error_;
};

}  // namespace tvk
