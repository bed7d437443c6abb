#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"

#include <gtest/gtest.h>

namespace quorvane::codesign {

TEST(Signature, OfHashesThatBlobsShareEndsInBoundedTime)
{
    // A thousand slots that all name the one large blob.
    constexpr std::uint32_t slots = 1000;
    const Bytes blob = test::makeBlob(0xfade7171, Bytes(4U << 20U, 0x55));
    test::ProgramPlan plan;
    plan.signature.reset();
    plan.infoPlistSection.reset();
    Bytes container(12 + 8 * (slots + 1));
    test::putBig32(container, 0, 0xfade0cc0);
    test::putBig32(container, 8, slots + 1);
    const std::size_t shared = container.size();
    test::append(container, blob);
    for (std::uint32_t slot = 0; slot <= slots; ++slot) {
        test::putBig32(container, 12 + slot * 8, slot == 0 ? 0 : slot + 11);
        test::putBig32(container, 16 + slot * 8, slot == 0 ? container.size() : shared);
    }
    test::SignaturePlan hashes;
    hashes.blobs[2] = blob;
    const Bytes one = makeDirectory({}, hashes, {});
    const ByteView hash = *ByteView(one).part(ByteView(one).u32(16) - 2 * 32, 32);
    Bytes directory(88);
    test::putBig32(directory, 0, 0xfade0c02);
    test::putBig32(directory, 8, 0x20400);
    test::putBig32(directory, 12, 2);
    test::putBig32(directory, 20, 40);
    test::putBig32(directory, 24, slots + 11);
    test::putBig32(directory, 28, 1);
    test::putBig32(directory, 32, 1);
    directory[36] = 32;
    directory[37] = 2;
    directory[39] = 12;
    for (std::uint32_t slot = slots + 11; slot > 0; --slot)
        test::append(directory, slot > 11 ? hash : ByteView(Bytes(32)));
    test::putBig32(directory, 16, directory.size());
    directory.resize(directory.size() + 32);
    test::putBig32(directory, 4, directory.size());
    test::append(container, directory);
    test::putBig32(container, 4, container.size());

    Bytes program = test::makeProgram();
    program.resize(test::codeLength);
    test::append(program, container);
    // The command with the signature's offset is the last one.
    for (std::size_t at = 32; at < 400; at += 4) {
        if (ByteView(program).u32(at, ByteOrder::little) == 0x1d)
            test::putNumber(program, at + 12, container.size(), 4, ByteOrder::little);
    }
    EXPECT_EQ(test::states(program), "3 3");
}

TEST(Signature, ChangesTheAnswerWhereverASealedByteIsChanged)
{
    const Bytes sound = test::signedProgram();
    ASSERT_EQ(test::states(sound), "2 2");
    const std::size_t directory = test::codeLength + ByteView(sound).u32(test::codeLength + 16);
    const std::size_t directoryEnd = directory + ByteView(sound).u32(directory + 4);
    for (std::size_t at = 4096; at < test::codeLength; at += 97) {
        Bytes program = sound;
        program[at] ^= 0x80U;
        EXPECT_EQ(test::states(program), "2 3") << "code at " << at;
    }
    for (std::size_t at = directory; at < directoryEnd; ++at) {
        Bytes program = sound;
        program[at] ^= 0x01U;
        const std::string answer = test::states(program);
        EXPECT_NE(answer[0], '2') << "directory at " << at - directory;
        EXPECT_NE(answer[2], '2') << "directory at " << at - directory;
    }
}

TEST(Signature, ChangesTheStrictAnswerWhereverAByteOfTheHeaderIsChanged)
{
    const Bytes sound = test::makeProgram();
    for (std::size_t at = 0; at < 400; ++at) {
        Bytes program = sound;
        program[at] ^= 0x01U;
        EXPECT_NE(test::states(program).substr(2), "2") << "header at " << at;
    }
}

TEST(Signature, CutAnywhereIsAnsweredWithoutHarm)
{
    const Bytes sound = test::signedProgram();
    for (std::size_t length = 0; length < sound.size(); length += length < 500 ? 1 : 61) {
        const Bytes cut(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_NE(test::states(cut).substr(2), "2") << length;
    }
}

} // namespace quorvane::codesign
