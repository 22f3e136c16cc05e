#pragma once

#include <string>

namespace session {

/// A certificate for 127.0.0.1 and localhost, its own authority, and its key: made for one run, good
/// for a day, and gone with the object. The files lie in a folder that nobody else can read.
class OwnCertificate {
public:
    /// std::runtime_error where it cannot be made.
    OwnCertificate();
    ~OwnCertificate();
    OwnCertificate(OwnCertificate const &) = delete;
    OwnCertificate & operator=(OwnCertificate const &) = delete;

    // PEM files.
    std::string certificateFile() const { return folder_ + "/certificate.pem"; }
    std::string keyFile() const { return folder_ + "/key.pem"; }

private:
    void make() const;
    void remove() const;

    std::string folder_;
};

}  // namespace session
