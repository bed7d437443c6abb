#include "codesign/Hasher.h"

namespace quorvane::codesign {

const EVP_MD* hashMethod(HashAlgorithm algorithm)
{
    // Fetching costs more than hashing a page. The methods live as long as the process.
    static const std::array<const EVP_MD*, 4> methods{
        EVP_MD_fetch(nullptr, "SHA1", nullptr),
        EVP_MD_fetch(nullptr, "SHA256", nullptr),
        EVP_MD_fetch(nullptr, "SHA384", nullptr),
        EVP_MD_fetch(nullptr, "SHA512", nullptr),
    };
    return methods[static_cast<std::size_t>(algorithm)];
}

Hasher::Hasher(HashAlgorithm algorithm)
    : m_method(hashMethod(algorithm))
    , m_context(EVP_MD_CTX_new())
{
    begin();
}

void Hasher::begin()
{
    m_usable = m_method != nullptr && m_context != nullptr
        && EVP_DigestInit_ex2(m_context.get(), m_method, nullptr) == 1;
}

void Hasher::update(ByteView bytes)
{
    m_usable = m_usable && EVP_DigestUpdate(m_context.get(), bytes.data(), bytes.size()) == 1;
}

HashValue Hasher::finish()
{
    HashValue value;
    if (!m_usable || EVP_DigestFinal_ex(m_context.get(), value.bytes.data(), &value.length) != 1)
        value.length = 0;
    begin();
    return value;
}

HashValue hashOf(HashAlgorithm algorithm, ByteView bytes)
{
    Hasher hasher(algorithm);
    hasher.update(bytes);
    return hasher.finish();
}

} // namespace quorvane::codesign
