#include "examples/session/OwnCertificate.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace session {

namespace {

constexpr long SECONDS_OF_A_DAY = 24 * 60 * 60;
constexpr long CLOCK_SLACK_SECONDS = 60 * 60;

struct Free {
    void operator()(BIO * bio) const { BIO_free(bio); }
    void operator()(EVP_PKEY * key) const { EVP_PKEY_free(key); }
    void operator()(EVP_PKEY_CTX * context) const { EVP_PKEY_CTX_free(context); }
    void operator()(X509 * certificate) const { X509_free(certificate); }
    void operator()(X509_EXTENSION * extension) const { X509_EXTENSION_free(extension); }
};

template <class Object>
using Owned = std::unique_ptr<Object, Free>;

void require(bool succeeded) {
    if (!succeeded) {
        throw std::runtime_error("no certificate could be made");
    }
}

Owned<EVP_PKEY> newKey() {
    Owned<EVP_PKEY_CTX> const context(EVP_PKEY_CTX_new_id(EVP_PKEY_EC, nullptr));
    EVP_PKEY * key = nullptr;
    require(context && EVP_PKEY_keygen_init(context.get()) == 1 &&
            EVP_PKEY_CTX_set_ec_paramgen_curve_nid(context.get(), NID_X9_62_prime256v1) == 1 &&
            EVP_PKEY_keygen(context.get(), &key) == 1);
    return Owned<EVP_PKEY>(key);
}

void extend(X509 * certificate, int what, char const * value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    Owned<X509_EXTENSION> const extension(X509V3_EXT_conf_nid(nullptr, &context, what, value));
    require(extension && X509_add_ext(certificate, extension.get(), -1) == 1);
}

Owned<X509> newCertificate(EVP_PKEY * key) {
    Owned<X509> certificate(X509_new());
    require(certificate != nullptr);
    X509 * const x509 = certificate.get();
    auto const * const name = reinterpret_cast<unsigned char const *>("localhost");
    X509_NAME * const subject = X509_get_subject_name(x509);
    require(X509_set_version(x509, 2) == 1 &&
            ASN1_INTEGER_set(X509_get_serialNumber(x509), 1) == 1 &&
            X509_gmtime_adj(X509_getm_notBefore(x509), -CLOCK_SLACK_SECONDS) != nullptr &&
            X509_gmtime_adj(X509_getm_notAfter(x509), SECONDS_OF_A_DAY) != nullptr &&
            X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_ASC, name, -1, -1, 0) == 1 &&
            X509_set_issuer_name(x509, subject) == 1 && X509_set_pubkey(x509, key) == 1);
    extend(x509, NID_basic_constraints, "critical,CA:TRUE");
    extend(x509, NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1");
    require(X509_sign(x509, key, EVP_sha256()) != 0);
    return certificate;
}

Owned<BIO> newFile(std::string const & name) {
    Owned<BIO> file(BIO_new_file(name.c_str(), "w"));
    require(file != nullptr);
    return file;
}

}  // namespace

OwnCertificate::OwnCertificate() {
    folder_ = (std::filesystem::temp_directory_path() / "tvk-session-XXXXXX").string();
    require(mkdtemp(folder_.data()) != nullptr);
    try {
        make();
    } catch (...) {
        remove();
        throw;
    }
}

OwnCertificate::~OwnCertificate() { remove(); }

void OwnCertificate::make() const {
    auto const key = newKey();
    auto const certificate = newCertificate(key.get());
    require(PEM_write_bio_X509(newFile(certificateFile()).get(), certificate.get()) == 1 &&
            PEM_write_bio_PrivateKey(newFile(keyFile()).get(), key.get(), nullptr, nullptr, 0,
                                     nullptr, nullptr) == 1);
}

void OwnCertificate::remove() const {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

}  // namespace session
