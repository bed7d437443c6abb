#include "codesign/HashLists.h"

#include "codesign/ObjectIdentifiers.h"
#include "codesign/XmlPropertyList.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace quorvane {

namespace {

// The first form is a property list: an array of hashes, cut, in the order of the hash types.
bool matchesPropertyList(ByteView values, const CodeDirectories& directories)
{
    const auto text = BerReader(values).next(berTag::octetString);
    const auto list = text ? parseXmlPropertyList(text->content) : std::nullopt;
    const PropertyValue* hashes = list ? list->find("cdhashes") : nullptr;
    if (hashes == nullptr || hashes->kind != PropertyValue::Kind::array)
        return false;
    std::vector<const CodeDirectory*> sorted;
    for (const CodeDirectory& directory : directories.all)
        sorted.push_back(&directory);
    std::sort(sorted.begin(), sorted.end(), [](const CodeDirectory* left, const CodeDirectory* right) {
        return left->hashType() < right->hashType();
    });
    return std::equal(hashes->items.begin(), hashes->items.end(), sorted.begin(), sorted.end(),
        [](const PropertyValue& item, const CodeDirectory* directory) {
            const ByteView stored(item.text.data(), item.text.size());
            return item.kind == PropertyValue::Kind::data && stored.size() == listedHashLength
                && directoryHash(*directory).startsWith(stored);
        });
}

using NamedHash = std::pair<HashAlgorithm, std::string>;

// The second form is a set of whole hashes, each under the name of its algorithm.
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
    for (const CodeDirectory& directory : directories.all) {
        if (!directory.hashAlgorithm())
            return false;
        loaded.emplace_back(*directory.hashAlgorithm(), directoryHash(directory).view().text());
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

} // namespace quorvane
