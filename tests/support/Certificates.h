#pragma once

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace tvk::test {

/// What a certificate shall say.
struct CertificateWish {
    std::string names = "DNS:localhost,IP:127.0.0.1";  ///< whom it is for
    long fromSeconds = -3600;                          ///< valid, counted from now
    long toSeconds = 24 * 3600;
};

/// A certificate with its key, both as PEM.
struct Certificate {
    std::string certificate;
    std::string key;
};

/// Issues certificates for servers of tests. Programs that use it link OpenSSL::SSL.
class CertificateAuthority {
public:
    explicit CertificateAuthority(std::string const & name = "Test Authority")
        : key_(newKey()), name_(name), certificate_(sign(name, *key_, wishOfAuthority(), true)) {}

    /// What clients trust, as PEM.
    std::string pem() const { return pemOf(*certificate_); }

    Certificate issue(CertificateWish const & wish = {}) const {
        KeyPtr const key = newKey();
        return {pemOf(*sign("server", *key, wish, false)), pemOf(*key)};
    }

    /// A certificate that nobody but itself stands for.
    static Certificate selfSigned(CertificateWish const & wish = {}) {
        CertificateAuthority const itself("server", wish);
        return {itself.pem(), pemOf(*itself.key_)};
    }

private:
    template <auto FREE>
    struct FreeBy {
        template <class Object>
        void operator()(Object * object) const {
            FREE(object);
        }
    };
    using KeyPtr = std::unique_ptr<EVP_PKEY, FreeBy<EVP_PKEY_free>>;
    using X509Ptr = std::unique_ptr<X509, FreeBy<X509_free>>;
    using BioPtr = std::unique_ptr<BIO, FreeBy<BIO_free>>;

    CertificateAuthority(std::string const & name, CertificateWish const & wish)
        : key_(newKey()), name_(name), certificate_(sign(name, *key_, wish, false)) {}

    static CertificateWish wishOfAuthority() {
        constexpr long YEAR = 365L * 24 * 3600;
        return {"", -YEAR, YEAR};
    }

    static void check(bool done) {
        if (!done) {
            throw std::runtime_error("OpenSSL makes no certificate");
        }
    }

    static KeyPtr newKey() {
        std::unique_ptr<EVP_PKEY_CTX, FreeBy<EVP_PKEY_CTX_free>> const context(
            EVP_PKEY_CTX_new_id(EVP_PKEY_EC, nullptr));
        EVP_PKEY * key = nullptr;
        check(EVP_PKEY_keygen_init(context.get()) == 1);
        check(EVP_PKEY_CTX_set_ec_paramgen_curve_nid(context.get(), NID_X9_62_prime256v1) == 1);
        check(EVP_PKEY_keygen(context.get(), &key) == 1);
        return KeyPtr(key);
    }

    X509Ptr sign(std::string const & subject, EVP_PKEY & key, CertificateWish const & wish,
                 bool isAuthority) const {
        static long serial = 0;
        X509Ptr certificate(X509_new());
        X509 * const x509 = certificate.get();
        X509_set_version(x509, 2);  // counted from 0: version 3
        ASN1_INTEGER_set(X509_get_serialNumber(x509), ++serial);
        X509_gmtime_adj(X509_getm_notBefore(x509), wish.fromSeconds);
        X509_gmtime_adj(X509_getm_notAfter(x509), wish.toSeconds);
        setName(*X509_get_subject_name(x509), subject);
        setName(*X509_get_issuer_name(x509), name_);
        check(X509_set_pubkey(x509, &key) == 1);
        addExtension(x509, NID_basic_constraints, isAuthority ? "critical,CA:TRUE" : "CA:FALSE");
        if (!wish.names.empty()) {
            addExtension(x509, NID_subject_alt_name, wish.names);
        }
        check(X509_sign(x509, key_.get(), EVP_sha256()) > 0);
        return certificate;
    }

    static void setName(X509_NAME & name, std::string const & text) {
        auto const * const bytes = reinterpret_cast<unsigned char const *>(text.c_str());
        check(X509_NAME_add_entry_by_txt(&name, "CN", MBSTRING_ASC, bytes, -1, -1, 0) == 1);
    }

    static void addExtension(X509 * x509, int kind, std::string const & value) {
        std::unique_ptr<X509_EXTENSION, FreeBy<X509_EXTENSION_free>> const extension(
            X509V3_EXT_conf_nid(nullptr, nullptr, kind, value.c_str()));
        check(extension != nullptr && X509_add_ext(x509, extension.get(), -1) == 1);
    }

    static std::string textOf(BIO & bio) {
        char * text = nullptr;
        long const size = BIO_get_mem_data(&bio, &text);
        return {text, static_cast<std::size_t>(size)};
    }

    static std::string pemOf(X509 & x509) {
        BioPtr const bio(BIO_new(BIO_s_mem()));
        check(PEM_write_bio_X509(bio.get(), &x509) == 1);
        return textOf(*bio);
    }

    static std::string pemOf(EVP_PKEY & key) {
        BioPtr const bio(BIO_new(BIO_s_mem()));
        check(PEM_write_bio_PrivateKey(bio.get(), &key, nullptr, nullptr, 0, nullptr, nullptr) ==
              1);
        return textOf(*bio);
    }

    KeyPtr key_;
    std::string name_;
    X509Ptr certificate_;
};

}  // namespace tvk::test
