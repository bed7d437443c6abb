#include "codesign/ProgramCode.h"

#include "codesign/PageHashes.h"
#include "codesign/SpecialSlots.h"
#include "platform/Processes.h"
#include "platform/Unicode.h"

#include <algorithm>
#include <utility>

namespace quorvane::codesign {

namespace {

constexpr std::uint64_t largestInfoPlistSection = 4U << 20U;
constexpr std::uint64_t largestSeal = 16U << 20U;

// None for a text that cannot be shown.
std::optional<std::string> shownText(std::string_view text)
{
    constexpr std::size_t longestShown = 4096;
    return text.size() <= longestShown && platform::isValidUtf8(text) ? std::optional<std::string>(text)
                                                                      : std::nullopt;
}

CertificateFacts factsOf(const Certificate& certificate, const TrustAnchor& anchor)
{
    CertificateFacts facts;
    std::vector<CertificateItem> subject;
    if (const auto name = certificate.commonName())
        subject.push_back({kSecOIDCommonName, *name});
    facts.values.emplace(kSecOIDX509V1SubjectName, std::move(subject));
    facts.longDescription = certificate.longDescription();
    facts.trust = anchor.is(certificate) ? trustResult::unspecified : trustResult::recoverableFailure;
    return facts;
}

} // namespace

std::unique_ptr<ProgramCode> ProgramCode::readWhole(std::unique_ptr<ProgramCode> code)
{
    return code->m_file.hasFailed() ? nullptr : std::move(code);
}

std::unique_ptr<ProgramCode> ProgramCode::atPath(
    const std::string& path, const TrustAnchor& anchor, const platform::FileRoot& root)
{
    auto bundle = bundleAtFolder(path, root);
    auto file = CodeFile::open(bundle ? bundle->executable : path, root);
    if (!file)
        return nullptr;
    if (!bundle)
        bundle = bundleOfExecutable(path, *file, root);
    return readWhole(std::unique_ptr<ProgramCode>(
        new ProgramCode(std::move(*file), std::move(bundle), Source::file, anchor)));
}

std::unique_ptr<ProgramCode> ProgramCode::ofProcess(std::int32_t pid)
{
    auto program = platform::programOfProcess(pid);
    auto file = program ? CodeFile::adopt(std::move(program->file)) : std::nullopt;
    if (!file)
        return nullptr;
    auto bundle = bundleOfExecutable(program->path, *file);
    return readWhole(std::unique_ptr<ProgramCode>(
        new ProgramCode(std::move(*file), std::move(bundle), Source::process, platformRoot())));
}

ProgramCode::ProgramCode(
    CodeFile file, std::optional<BundleLayout> bundle, Source source, const TrustAnchor& anchor)
    : m_file(std::move(file))
    , m_bundle(std::move(bundle))
    , m_source(source)
    , m_anchor(anchor)
{
    if (isMachOProgram(m_file))
        readSignature();
}

void ProgramCode::readSignature()
{
    m_program = MachOFile::read(m_file);
    if (!m_program) {
        m_signatureStatus = status::unreadable;
        return;
    }
    const MachOSlice& slice = m_program->slice();
    if (slice.signature.offset != 0)
        m_container
            = SignatureContainer::read(m_file, slice.offset + slice.signature.offset, slice.signature.length);
    if (!m_container)
        return;
    m_directories = loadCodeDirectories(*m_container);
    m_signatureStatus = m_directories.status == status::valid ? judgeSigner() : m_directories.status;
}

bool ProgramCode::isSignedAdHoc() const
{
    return (m_directories.strongest().flags() & codeDirectoryFlag::adHoc) != 0;
}

ValidityStatus ProgramCode::judgeSigner()
{
    if (isSignedAdHoc())
        return status::valid;
    const auto blob = m_container->blob(signatureSlot::cms);
    const ByteView cms = blob ? blob->from(blobHeaderSize) : ByteView();
    if (cms.empty())
        return status::unsignedCode;
    m_signer = checkCodeSigner(cms, m_directories, m_anchor);
    return m_signer.status;
}

std::optional<Bytes> ProgramCode::infoPlist() const
{
    if (m_bundle)
        return readInfoPlist(*m_bundle);
    const auto& section = m_program->slice().infoPlist;
    if (!section)
        return std::nullopt;
    return m_file.bytes(
        m_program->slice().offset + section->offset, section->length, largestInfoPlistSection);
}

bool ProgramCode::isKnownBy(ByteView codeDirectoryHash) const
{
    return codeDirectoryHash.size() == listedHashLength
        && std::any_of(m_directories.hashes.begin(), m_directories.hashes.end(),
            [&](const HashValue& one) { return one.startsWith(codeDirectoryHash); });
}

ValidityStatus ProgramCode::checkResources(std::uint32_t flags, SealBudget& budget) const
{
    const bool sealed = m_directories.strongest().specialHash(signatureSlot::resourceSeal).has_value();
    if (!m_bundle)
        return sealed ? status::badResource : status::valid;
    if (!m_bundle->root.isThisMachines())
        return status::notVerifiable;
    const auto file = CodeFile::open(m_bundle->resourceSeal);
    const auto seal = file ? file->bytes(0, file->size(), largestSeal) : std::nullopt;
    if (!seal || !matchesSpecialHash(m_directories.strongest(), signatureSlot::resourceSeal, *seal))
        return status::badResource;
    // The hash is compared before descending into the nested code: code cannot contain its own hash, so
    // bundles that refer back to themselves end here.
    const auto isIntactCode = [&](const std::string& path, ByteView codeDirectoryHash) {
        const auto nested = atPath(path, m_anchor);
        return nested && nested->isKnownBy(codeDirectoryHash)
            && nested->check(flags, budget) == status::valid;
    };
    return resourcesMatchSeal(*m_bundle, *seal, isIntactCode, budget) ? status::valid : status::badResource;
}

ValidityStatus ProgramCode::checkStructure() const
{
    if (m_directories.strongest().codeLimit() != m_program->slice().signature.offset)
        return status::signatureInvalid;
    return m_program->structureIsSound(m_file) ? status::valid : status::badStructure;
}

ValidityStatus ProgramCode::check(std::uint32_t flags, SealBudget& budget) const
{
    ValidityStatus status = m_signatureStatus;
    if (status == status::valid)
        status = verifySpecialSlots(m_directories.strongest(), *m_container, infoPlist());
    if (m_source == Source::process)
        return status;
    if (status == status::valid && (flags & validityFlag::skipPages) == 0)
        status = verifyPages(m_file, m_program->slice().offset, m_directories.all);
    if (status == status::valid && (flags & validityFlag::skipResources) == 0)
        status = checkResources(flags, budget);
    if (status == status::valid && (flags & validityFlag::strict) != 0)
        status = checkStructure();
    return status;
}

ValidityStatus ProgramCode::checkValidity(std::uint32_t flags) const
{
    SealBudget budget;
    return check(flags, budget);
}

SigningInformation ProgramCode::signingInformation() const
{
    SigningInformation information;
    if (m_directories.status != status::valid)
        return information;
    const CodeDirectory& directory = m_directories.strongest();
    information.identifier = shownText(directory.identifier());
    information.platformIdentifier = directory.platformIdentifier();
    // Callers compare the team without checking the state: a name that anyone can copy must not count.
    const bool signerProven = !isSignedAdHoc() && m_signer.status == status::valid;
    if (signerProven && directory.teamIdentifier())
        information.teamIdentifier = shownText(*directory.teamIdentifier());
    for (const Certificate& certificate : m_signer.chain)
        information.certificates.push_back(factsOf(certificate, m_anchor));
    return information;
}

} // namespace quorvane::codesign
