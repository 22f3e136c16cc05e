#!/usr/bin/env python3
"""Writes ECBMCT128.rsp, ECBMCT192.rsp and ECBMCT256.rsp beside itself, or with --check compares them.

The Monte Carlo test of AESAVS (NIST, "The Advanced Encryption Standard Algorithm Validation Suite",
6.4.1): 100 results, each the last of 1000 blocks that go one into the next, and then another key.
The blocks are ciphered by OpenSSL's libcrypto.
"""

import ctypes
import ctypes.util
import pathlib
import sys

CRYPTO = ctypes.CDLL(ctypes.util.find_library("crypto"))
CRYPTO.EVP_CIPHER_CTX_new.restype = ctypes.c_void_p
for bits in (128, 192, 256):
    getattr(CRYPTO, f"EVP_aes_{bits}_ecb").restype = ctypes.c_void_p

# Key and first block of each direction.
STARTS = {
    128: (("139a35422f1d61de3c91787fe0507afd", "b9145a768b7dc489a096b546f43b231f"),
          ("0c60e7bf20ada9baa9e1ddf0d1540726", "b08a29b11a500ea3aca42c36675b9785")),
    192: (("b9a63e09e1dfc42e93a90d9bad739e5967aef672eedd5da9", "85a1f7a58167b389cddc8a9ff175ee26"),
          ("4b97585701c03fbebdfa8555024f589f1482c58a00fdd9fd", "d0bd0e02ded155e4516be83f42d347a4")),
    256: (("f9e8389f5b80712e3886cc1fa2d28a3b8c9cd88a2d4a54c6aa86ce0fef944be0",
           "b379777f9050e2a818f2940cbbd9aba4"),
          ("2b09ba39b834062b9e93f48373b8dd018dedf1e5ba1b8af831ebbacbc92a2643",
           "89649bd0115f30bd878567610223a59d")),
}


class Cipher:
    def __init__(self, key, encrypts):
        self.context = ctypes.c_void_p(CRYPTO.EVP_CIPHER_CTX_new())
        cipher = ctypes.c_void_p(getattr(CRYPTO, f"EVP_aes_{8 * len(key)}_ecb")())
        if CRYPTO.EVP_CipherInit_ex(self.context, cipher, None, key, None, int(encrypts)) != 1:
            sys.exit("libcrypto refuses the key")
        CRYPTO.EVP_CIPHER_CTX_set_padding(self.context, 0)

    def __call__(self, block):
        out = ctypes.create_string_buffer(32)
        size = ctypes.c_int()
        CRYPTO.EVP_CipherUpdate(self.context, out, ctypes.byref(size), block, len(block))
        return out.raw[:16]

    def __del__(self):
        CRYPTO.EVP_CIPHER_CTX_free(self.context)


def results(bits, encrypts):
    names = ("PLAINTEXT", "CIPHERTEXT") if encrypts else ("CIPHERTEXT", "PLAINTEXT")
    key, block = map(bytes.fromhex, STARTS[bits][0 if encrypts else 1])
    for count in range(100):
        cipher = Cipher(key, encrypts)
        first = block
        for _ in range(1000):
            before, block = block, cipher(block)
        yield (f"COUNT = {count}\nKEY = {key.hex()}\n"
               f"{names[0]} = {first.hex()}\n{names[1]} = {block.hex()}\n")
        # The key changes by as many bytes as it has, the last ones of the last two results.
        key = bytes(a ^ b for a, b in zip(key, (before + block)[-len(key):]))


def document(bits):
    head = (f"# AESAVS Monte Carlo test for ECB, key length {bits}\n"
            "# made by make_monte_carlo.py with OpenSSL's libcrypto\n\n")
    return head + "\n".join(["[ENCRYPT]\n", *results(bits, True), "[DECRYPT]\n", *results(bits, False)])


def main():
    folder = pathlib.Path(__file__).parent
    for bits in STARTS:
        path = folder / f"ECBMCT{bits}.rsp"
        if sys.argv[1:] == ["--check"]:
            if path.read_text(encoding="ascii") != document(bits):
                sys.exit(f"{path} differs from what OpenSSL makes")
        else:
            path.write_text(document(bits), encoding="ascii")


if __name__ == "__main__":
    main()
