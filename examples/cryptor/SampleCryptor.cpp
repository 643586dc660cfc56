#include "SampleCryptor.h"

#include <limits>

#include "Keys.h"

namespace Sample {

namespace {

constexpr unsigned int Overhead = NonceSize + TagSize;
constexpr std::size_t MaxSealedSize = std::numeric_limits<int>::max();

// An answer in the terms of the interface. What a failure left behind may be a
// part of the text, or a text that nobody vouches for.
bool Finish(bool done, Byte* output, std::size_t size, unsigned long long* outputLength)
{
    if (done)
        *outputLength = size;
    else
        Wipe(output, size);
    return done;
}

} // namespace

SampleCryptor::SampleCryptor() : keys(MakeKeys()) {}

SampleCryptor::~SampleCryptor() = default;

int SampleCryptor::GetMaxBlockSize() { return static_cast<int>(BlockSize) - 1; }

bool SampleCryptor::RsaEncrypt(Byte const* input, unsigned long long inputSize, Byte* output,
                               unsigned long long outputCapacity, unsigned long long* outputLength)
{
    if (!keys || inputSize > RsaTextSize || outputCapacity < BlockSize)
        return false;
    bool const done = keys->RsaEncrypt(input, static_cast<std::size_t>(inputSize), output);
    return Finish(done, output, BlockSize, outputLength);
}

bool SampleCryptor::RsaDecrypt(Byte const* input, unsigned long long inputSize, Byte* output,
                               unsigned long long outputCapacity, unsigned long long* outputLength)
{
    if (!keys || inputSize != BlockSize || outputCapacity < BlockSize)
        return false;
    std::size_t size = BlockSize;
    bool const done = keys->RsaDecrypt(input, output, size);
    return Finish(done, output, done ? size : BlockSize, outputLength);
}

bool SampleCryptor::EncryptBuffer(Byte const* input, unsigned long long inputSize, Byte* output,
                                  unsigned long long outputCapacity,
                                  unsigned long long* outputLength)
{
    if (!keys || inputSize > MaxSealedSize - Overhead || outputCapacity < inputSize + Overhead)
        return false;
    auto const size = static_cast<std::size_t>(inputSize);
    return Finish(keys->Seal(input, size, output), output, size + Overhead, outputLength);
}

bool SampleCryptor::DecryptBuffer(Byte const* input, unsigned long long inputSize, Byte* output,
                                  unsigned long long outputCapacity,
                                  unsigned long long* outputLength)
{
    if (!keys || inputSize < Overhead || inputSize > MaxSealedSize ||
        outputCapacity < inputSize - Overhead)
        return false;
    auto const size = static_cast<std::size_t>(inputSize - Overhead);
    return Finish(keys->Open(input, output, size), output, size, outputLength);
}

} // namespace Sample
