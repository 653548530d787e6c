// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

/// A public key of minisign: its second line, as `minisign -G` prints it.
struct MinisignKey {
    QByteArray id; ///< 8 bytes
    QByteArray key; ///< 32 bytes

    /// Absent when `base64` is none.
    static std::optional<MinisignKey> parse(const QByteArray &base64);
};

enum class SignatureCheck {
    valid,
    unreadable, ///< not a minisign signature at all
    unknownKey, ///< made with a key that is none of ours
    wrong, ///< for other bytes, another trusted comment, or made up
};

/// Checks a detached minisign signature (the content of a `.minisig` file) of `message`: both the
/// hashed kind and the older one, and that of the trusted comment.
SignatureCheck checkMinisign(const QByteArray &message, const QByteArray &signature,
                             const QList<MinisignKey> &keys);
