// SPDX-License-Identifier: MIT
#include "Minisign.h"

#include <algorithm>
#include <sodium.h>

namespace
{

constexpr qsizetype algorithmSize = 2;
constexpr qsizetype keyIdSize = 8;
constexpr QByteArrayView trustedPrefix("trusted comment: ");

const unsigned char *bytes(const QByteArray &array)
{
    return reinterpret_cast<const unsigned char *>(array.constData());
}

std::optional<QByteArray> fromBase64(const QByteArray &text, qsizetype size)
{
    const auto decoded =
        QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
    const bool isWhole = decoded && decoded.decoded.size() == size;
    return isWhole ? std::optional(decoded.decoded) : std::nullopt;
}

struct Signature {
    bool isOfHash = false;
    QByteArray keyId;
    QByteArray signature;
    QByteArray trustedComment;
    QByteArray globalSignature; ///< of signature and trusted comment
};

std::optional<Signature> parseSignature(const QByteArray &text)
{
    QList<QByteArray> lines = text.split('\n');
    for (QByteArray &line : lines) {
        if (line.endsWith('\r'))
            line.chop(1);
    }
    if (lines.size() < 4 || !lines[2].startsWith(trustedPrefix))
        return std::nullopt;
    const auto signature = fromBase64(lines[1], algorithmSize + keyIdSize + crypto_sign_BYTES);
    const auto global = fromBase64(lines[3], crypto_sign_BYTES);
    if (!signature || !global)
        return std::nullopt;
    const QByteArray algorithm = signature->first(algorithmSize);
    if (algorithm != "Ed" && algorithm != "ED")
        return std::nullopt;
    return Signature{algorithm == "ED", signature->sliced(algorithmSize, keyIdSize),
                     signature->last(crypto_sign_BYTES), lines[2].sliced(trustedPrefix.size()),
                     *global};
}

QByteArray hashOf(const QByteArray &message)
{
    QByteArray hash(crypto_generichash_BYTES_MAX, '\0');
    crypto_generichash(reinterpret_cast<unsigned char *>(hash.data()), std::size_t(hash.size()),
                       bytes(message), std::size_t(message.size()), nullptr, 0);
    return hash;
}

bool isSignedBy(const MinisignKey &key, const QByteArray &message, const QByteArray &signature)
{
    return crypto_sign_verify_detached(bytes(signature), bytes(message),
                                       std::size_t(message.size()), bytes(key.key))
        == 0;
}

} // namespace

std::optional<MinisignKey> MinisignKey::parse(const QByteArray &base64)
{
    const auto key = fromBase64(base64, algorithmSize + keyIdSize + crypto_sign_PUBLICKEYBYTES);
    if (!key || !key->startsWith("Ed"))
        return std::nullopt;
    return MinisignKey{key->sliced(algorithmSize, keyIdSize),
                       key->last(crypto_sign_PUBLICKEYBYTES)};
}

SignatureCheck checkMinisign(const QByteArray &message, const QByteArray &signature,
                             const QList<MinisignKey> &keys)
{
    const auto parsed = parseSignature(signature);
    if (!parsed)
        return SignatureCheck::unreadable;
    const auto key = std::find_if(keys.begin(), keys.end(), [&parsed](const MinisignKey &known) {
        return known.id == parsed->keyId;
    });
    if (key == keys.end())
        return SignatureCheck::unknownKey;

    const QByteArray signedBytes = parsed->isOfHash ? hashOf(message) : message;
    const bool isValid = sodium_init() >= 0 && isSignedBy(*key, signedBytes, parsed->signature)
        && isSignedBy(*key, parsed->signature + parsed->trustedComment, parsed->globalSignature);
    return isValid ? SignatureCheck::valid : SignatureCheck::wrong;
}
