#pragma once

#include "codesign/BundleLayout.h"
#include "codesign/CodeDirectories.h"
#include "codesign/CodeFile.h"
#include "codesign/CodeObject.h"
#include "codesign/MachOFile.h"
#include "codesign/ResourceSeal.h"
#include "codesign/SignatureContainer.h"
#include "codesign/SignerCheck.h"
#include "codesign/TrustAnchor.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace quorvane::codesign {

// The signature of a Mach-O program file, alone or as the main executable of a bundle.
//
// Construction reads the file, except for its code pages and its bundle's resources: these are read by each
// check that needs them. A file that changes in between fails a check and does no other harm.
class ProgramCode : public CodeObject {
public:
    // Null when the path names neither a regular file nor a bundle with one, and when that file could not be
    // read: on a failing disk not even the lack of a signature is certain. `path` is resolved within `root`;
    // with another root than this machine's, resources never match.
    static std::unique_ptr<ProgramCode> atPath(const std::string& path,
        const TrustAnchor& anchor = platformRoot(), const platform::FileRoot& root = {});

    // The code of a running process, whose pages, resources and structure are never checked. Null when the
    // process is gone or its program cannot be read.
    static std::unique_ptr<ProgramCode> ofProcess(std::int32_t pid);

    ValidityStatus checkValidity(std::uint32_t flags) const override;
    SigningInformation signingInformation() const override;

private:
    enum class Source { file, process };

    ProgramCode(CodeFile file, std::optional<BundleLayout> bundle, Source source, const TrustAnchor& anchor);

    // The code, or null when its file failed while the signature was read.
    static std::unique_ptr<ProgramCode> readWhole(std::unique_ptr<ProgramCode> code);

    void readSignature();
    ValidityStatus judgeSigner();
    bool isSignedAdHoc() const;
    std::optional<Bytes> infoPlist() const;
    ValidityStatus check(std::uint32_t flags, SealBudget& budget) const;
    ValidityStatus checkResources(std::uint32_t flags, SealBudget& budget) const;
    ValidityStatus checkStructure() const;
    bool isKnownBy(ByteView codeDirectoryHash) const;

    CodeFile m_file;
    std::optional<BundleLayout> m_bundle;
    Source m_source;
    TrustAnchor m_anchor;
    std::optional<MachOFile> m_program;
    std::optional<SignatureContainer> m_container;
    CodeDirectories m_directories;
    SignerVerdict m_signer;
    ValidityStatus m_signatureStatus
        = status::unsignedCode; // before anything covered by the signature is checked
};

} // namespace quorvane::codesign
