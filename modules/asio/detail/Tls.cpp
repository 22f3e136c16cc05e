#include "modules/asio/detail/Tls.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <limits>

#include "modules/asio/TcpOptions.h"
#include "modules/asio/detail/Errors.h"

namespace tvk {

namespace {

constexpr std::size_t LARGEST_STEP = std::numeric_limits<int>::max();

struct Free {
    void operator()(SSL_CTX * context) const { SSL_CTX_free(context); }
    void operator()(SSL * connection) const { SSL_free(connection); }
};

/// The first of OpenSSL's errors is the one that tells what went wrong.
CString reasonOf(unsigned long code) {
    char const * const text = ERR_reason_error_string(code);
    return text != nullptr ? text : "unknown error";
}

bool trust(SSL_CTX * context, CString const & certFile) {
    return certFile.IsEmpty()
               ? SSL_CTX_set_default_verify_paths(context) == 1
               : SSL_CTX_load_verify_locations(context, certFile.GetString(), nullptr) == 1;
}

/// Asks for a certificate of that name or address, and names a name to a server that has several.
bool expectHost(SSL * connection, char const * host) {
    X509_VERIFY_PARAM * const parameters = SSL_get0_param(connection);
    if (X509_VERIFY_PARAM_set1_ip_asc(parameters, host) == 1) {
        return true;
    }
    X509_VERIFY_PARAM_set_hostflags(parameters, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    return X509_VERIFY_PARAM_set1_host(parameters, host, 0) == 1 &&
           SSL_set_tlsext_host_name(connection, host) == 1;
}

}  // namespace

struct TlsClient::Handles {
    std::unique_ptr<SSL_CTX, Free> context;
    std::unique_ptr<SSL, Free> connection;
    BIO * input = nullptr;  // both owned by the connection
    BIO * output = nullptr;
};

TlsClient::TlsClient(TcpOptions const & options) : handles_(std::make_unique<Handles>()) {
    ERR_clear_error();
    if (!prepare(options) && !failed_) {
        failed(reasonOf(ERR_get_error()), 0);
    }
    ERR_clear_error();
}

TlsClient::~TlsClient() = default;

bool TlsClient::prepare(TcpOptions const & options) {
    handles_->context.reset(SSL_CTX_new(TLS_client_method()));
    SSL_CTX * const context = handles_->context.get();
    if (context == nullptr || SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION) != 1) {
        return false;
    }
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
    SSL_CTX_set_options(context, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION);
    SSL_CTX_set_mode(context, SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_RELEASE_BUFFERS);
    CString const certFile = options.inet.getCertFile();
    if (!trust(context, certFile)) {
        failed("certificate file " + certFile + ": " + reasonOf(ERR_get_error()), 0);
        return false;
    }

    handles_->connection.reset(SSL_new(context));
    SSL * const connection = handles_->connection.get();
    if (connection == nullptr || !expectHost(connection, options.host.GetString())) {
        return false;
    }
    handles_->input = BIO_new(BIO_s_mem());
    handles_->output = BIO_new(BIO_s_mem());
    SSL_set_bio(connection, handles_->input, handles_->output);
    SSL_set_connect_state(connection);
    return handles_->input != nullptr && handles_->output != nullptr;
}

void TlsClient::addInput(char const * bytes, std::size_t size) {
    if (!failed_) {
        BIO_write(handles_->input, bytes, static_cast<int>(std::min(size, LARGEST_STEP)));
    }
}

std::size_t TlsClient::outputSize() const {
    return handles_->output != nullptr ? BIO_ctrl_pending(handles_->output) : 0;
}

void TlsClient::takeOutput(std::vector<char> * output) {
    output->resize(std::min(outputSize(), LARGEST_STEP));
    if (!output->empty()) {
        BIO_read(handles_->output, output->data(), static_cast<int>(output->size()));
    }
}

TlsClient::Result TlsClient::handshake() {
    if (failed_) {
        return Result::FAILED;
    }
    ERR_clear_error();
    return resultOf(SSL_do_handshake(handles_->connection.get()));
}

TlsClient::Result TlsClient::read(char * room, std::size_t size, std::size_t * count) {
    *count = 0;
    if (failed_) {
        return Result::FAILED;
    }
    ERR_clear_error();
    return resultOf(SSL_read_ex(handles_->connection.get(), room, size, count));
}

TlsClient::Result TlsClient::write(char const * bytes, std::size_t size, std::size_t * count) {
    *count = 0;
    if (failed_) {
        return Result::FAILED;
    }
    ERR_clear_error();
    return resultOf(SSL_write_ex(handles_->connection.get(), bytes, size, count));
}

void TlsClient::finish() {
    // During the handshake there is nothing to finish, and OpenSSL calls it an error.
    if (!failed_ && SSL_is_init_finished(handles_->connection.get()) == 1) {
        SSL_shutdown(handles_->connection.get());
        ERR_clear_error();
    }
}

TlsClient::Result TlsClient::resultOf(int returned) {
    if (returned > 0) {
        return Result::DONE;
    }
    SSL * const connection = handles_->connection.get();
    switch (SSL_get_error(connection, returned)) {
        case SSL_ERROR_WANT_READ:
        case SSL_ERROR_WANT_WRITE:
            return Result::NEEDS_INPUT;
        case SSL_ERROR_ZERO_RETURN:
            return Result::CLOSED;
        default:
            break;
    }
    unsigned long const code = ERR_get_error();
    ERR_clear_error();
    if (ERR_GET_LIB(code) == ERR_LIB_SSL &&
        ERR_GET_REASON(code) == SSL_R_CERTIFICATE_VERIFY_FAILED) {
        long const verdict = SSL_get_verify_result(connection);
        return failed(reasonOf(code) + ": " + X509_verify_cert_error_string(verdict), verdict);
    }
    return failed(reasonOf(code), ERR_GET_REASON(code));
}

TlsClient::Result TlsClient::failed(CString const & text, long code) {
    failed_ = true;
    error_ = ErrorInfo(ASIO_COMPONENT_CODE, ErrorInfo::ErrorDomain_SSL,
                       code != 0 ? static_cast<int>(code) : ErrorInfo::ERR_UNKNOWN, text, nullptr);
    return Result::FAILED;
}

}  // namespace tvk
