#include "memory/FreedMemory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "framework/Heap.h"
#include "framework/Secrets.h"
#include "support/SecretText.h"

namespace Rig {

namespace {

struct Form {
    std::array<char, 256> bytes;
    std::size_t size;
};

// Nothing here may allocate while a block is searched.
std::array<Form, 5> forms;
std::atomic<bool> watching{false};
std::atomic<int> found{0};
std::atomic<int> foundOfOthers{0};
std::atomic<int> searched{0};

template <class Unit>
void SetForm(Form& form, std::basic_string<Unit> const& text)
{
    form.size = text.size() * sizeof(Unit);
    if (form.size > form.bytes.size())
        throw std::length_error("the secret is too long");
    auto const* const bytes = reinterpret_cast<char const*>(text.data());
    std::copy(bytes, bytes + form.size, form.bytes.begin());
}

bool HoldsSecret(char const* block, std::size_t size)
{
    return std::any_of(forms.begin(), forms.end(), [&](Form const& form) {
        return std::search(block, block + size, form.bytes.begin(),
                           form.bytes.begin() + static_cast<std::ptrdiff_t>(form.size)) !=
               block + size;
    });
}

void Search(void* block)
{
    ++searched;
    if (HoldsSecret(static_cast<char const*>(block), BlockSize(block)))
        ++(IsFreedByThisProgram() ? found : foundOfOthers);
}

void SetForms(std::string const& secret)
{
    SetForm(forms[0], secret);
    SetForm(forms[1], std::wstring(secret.begin(), secret.end()));
    std::vector<std::string> const encoded = Secrets::Base64Forms(secret);
    for (std::size_t i = 0; i < encoded.size(); ++i)
        SetForm(forms[i + 2], encoded[i]);
}

} // namespace

FreedMemory::FreedMemory(std::string_view secret)
{
    PrepareForQuestions();
    // Its first units may be gone with a terminator: a part is as bad as the whole.
    SetForms(std::string(secret.substr(6)));
    found = foundOfOthers = searched = 0;
    watching = true;
}

FreedMemory::~FreedMemory() { watching = false; }

int FreedMemory::WithSecret() const { return found; }

int FreedMemory::WithSecretOfOthers() const { return foundOfOthers; }

int FreedMemory::Searched() const { return searched; }

// For the operators below.
void* NewBlock(std::size_t size)
{
    void* const block = std::malloc(size == 0 ? 1 : size);
    // What lay here before is not the new owner's.
    if (block != nullptr)
        Halvorix::SSOServices::Wipe(block, BlockSize(block));
    return block;
}

void Examine(void* block)
{
    if (block != nullptr && watching)
        Search(block);
}

} // namespace Rig

void* operator new(std::size_t size)
{
    if (void* const block = Rig::NewBlock(size))
        return block;
    throw std::bad_alloc();
}

void* operator new[](std::size_t size) { return ::operator new(size); }

void* operator new(std::size_t size, std::nothrow_t const&) noexcept { return Rig::NewBlock(size); }

void* operator new[](std::size_t size, std::nothrow_t const&) noexcept
{
    return Rig::NewBlock(size);
}

// Not by a jump to a common end: it is looked for among the callers.
void operator delete(void* block) noexcept
{
    Rig::Examine(block);
    std::free(block);
}

void operator delete[](void* block) noexcept { ::operator delete(block); }

void operator delete(void* block, std::size_t) noexcept { ::operator delete(block); }

void operator delete[](void* block, std::size_t) noexcept { ::operator delete(block); }

void operator delete(void* block, std::nothrow_t const&) noexcept { ::operator delete(block); }

void operator delete[](void* block, std::nothrow_t const&) noexcept { ::operator delete(block); }
