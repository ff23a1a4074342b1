// An allocator object for tests: it counts references, writes down every call, spoils memory before handing it
// out and before taking it back, and can be told to have no memory.
#pragma once

#include <mur/allocator.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

class CountingAllocator : public mur::allocator_interface {
public:
    CountingAllocator() = default;
    CountingAllocator(const CountingAllocator&) = delete;
    CountingAllocator& operator=(const CountingAllocator&) = delete;

    ~CountingAllocator()
    {
        EXPECT_EQ(references, 0) << "references are left";
        EXPECT_TRUE(buffers.empty()) << "buffers are left";
        for (const auto& [memory, bytes] : buffers)
            std::free(memory);
    }

    void AddReference() override
    {
        ++references;
        calls.push_back("add");
    }

    void ReleaseReference() override
    {
        --references;
        EXPECT_GE(references, 0) << "released once too often";
        calls.push_back("release");
    }

    void* Allocate(std::size_t bytes) override
    {
        calls.push_back("allocate " + std::to_string(bytes));
        if (allocationsUntilFailure == 0) return nullptr;
        if (allocationsUntilFailure > 0) --allocationsUntilFailure;
        void* const memory = std::malloc(bytes);
        std::memset(memory, 0xCD, bytes);
        buffers[memory] = bytes;
        return memory;
    }

    void Free(void* memory) override
    {
        calls.push_back("free " + std::to_string(buffers[memory]));
        EXPECT_NE(buffers[memory], 0u) << "freed what was not allocated here";
        std::memset(memory, 0xDD, buffers[memory]);
        buffers.erase(memory);
        std::free(memory);
    }

    int references = 0;
    int allocationsUntilFailure = -1; // negative: there is always memory
    std::map<void*, std::size_t> buffers;
    std::vector<std::string> calls;
};
