#include "codesign/HashLists.h"

#include "codesign/ObjectIdentifiers.h"
#include "platform/PropertyListReader.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace quorvane::codesign {

namespace {

// The first form is a property list: an array of truncated hashes, in the order of the hash types.
bool matchesPropertyList(ByteView values, const CodeDirectories& directories)
{
    const auto text = BerReader(values).next(berTag::octetString);
    const auto list = text ? platform::readPropertyList(text->content.text()) : std::nullopt;
    const auto* hashes = list ? list->find<platform::PropertyValue::Array>("cdhashes") : nullptr;
    if (hashes == nullptr)
        return false;
    std::vector<std::pair<std::uint8_t, HashValue>> sorted;
    for (std::size_t i = 0; i < directories.all.size(); ++i)
        sorted.emplace_back(directories.all[i].hashType(), directories.hashes[i]);
    std::sort(sorted.begin(), sorted.end(),
        [](const auto& left, const auto& right) { return left.first < right.first; });
    return std::equal(hashes->begin(), hashes->end(), sorted.begin(), sorted.end(),
        [](const platform::PropertyValue& item, const auto& loaded) {
            const auto* stored = item.as<platform::PropertyValue::Data>();
            return stored != nullptr && stored->bytes.size() == listedHashLength
                && loaded.second.startsWith(ByteView(stored->bytes.data(), stored->bytes.size()));
        });
}

using NamedHash = std::pair<HashAlgorithm, std::string>;

// The second form is a set of complete hashes, each with the identifier of its algorithm.
bool matchesSet(ByteView values, const CodeDirectories& directories)
{
    std::vector<NamedHash> listed;
    BerReader reader(values);
    while (!reader.atEnd() && listed.size() <= directories.all.size()) {
        const auto entry = reader.next(berTag::sequence);
        BerReader parts(entry ? entry->content : ByteView());
        const auto name = parts.next(berTag::objectIdentifier);
        const auto hash = parts.next(berTag::octetString);
        const auto algorithm = name ? hashAlgorithmOf(name->content) : std::nullopt;
        if (!algorithm || !hash)
            return false;
        listed.emplace_back(*algorithm, hash->content.text());
    }
    std::vector<NamedHash> loaded;
    for (std::size_t i = 0; i < directories.all.size(); ++i) {
        const auto algorithm = directories.all[i].hashAlgorithm();
        if (!algorithm)
            return false;
        loaded.emplace_back(*algorithm, directories.hashes[i].view().text());
    }
    std::sort(listed.begin(), listed.end());
    std::sort(loaded.begin(), loaded.end());
    return listed == loaded;
}

} // namespace

bool hashListsMatch(const CmsSigner& signer, const CodeDirectories& directories)
{
    const auto propertyList = signer.signedAttribute(oid::hashListPlist);
    const auto set = signer.signedAttribute(oid::hashListSet);
    if (!propertyList && !set)
        return directories.all.size() == 1;
    return (!propertyList || matchesPropertyList(*propertyList, directories))
        && (!set || matchesSet(*set, directories));
}

} // namespace quorvane::codesign
