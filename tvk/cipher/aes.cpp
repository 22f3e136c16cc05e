#include "tvk/cipher/aes.h"

#include "tvk/cipher/detail/AesRounds.h"

namespace {

using namespace tvk::detail;

template <class Direction>
std::uint16_t cipherBlock(unsigned char const * in, unsigned char * out, aes_ctx const & ctx) {
    if ((ctx.blockFlags & Direction::FLAG) == 0) {
        return 0;
    }
    AesState state = loadBlock(in);
    runRounds<Direction>(ctx, state);
    storeBlock(state, out);
    return 1;
}

}  // namespace

std::uint16_t aes_enc_blk(unsigned char const * in, unsigned char * out, aes_ctx const * ctx) {
    return cipherBlock<AesEncryption>(in, out, *ctx);
}

std::uint16_t aes_dec_blk(unsigned char const * in, unsigned char * out, aes_ctx const * ctx) {
    return cipherBlock<AesDecryption>(in, out, *ctx);
}
