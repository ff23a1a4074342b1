// The runtime's allocator object and the message string's binding to it. Whoever wants exception messages in
// memory of its own implements the interface; without an object malloc and free are used.
#pragma once

#include <mur/export.h>

#include <cstddef>
#include <cstdlib>

namespace mur {

// Reference-counted: whoever keeps a pointer adds a reference and releases it when done. The counting must be
// thread-safe when strings of several threads share one object. The order of the functions is part of the
// binary interface; an implementation may go on with functions of its own.
class MUR_EXPORT allocator_interface {
public:
    virtual void AddReference() = 0;
    virtual void ReleaseReference() = 0;
    virtual void* Allocate(std::size_t bytes) = 0; // null when there is no memory
    virtual void Free(void* memory) = 0;

protected:
    ~allocator_interface() = default;
};

// The only way in which the runtime calls an allocator object. A null object stands for malloc and free. An
// exception that escapes from the object ends the process.
struct MUR_EXPORT abi_v1_allocator {
    MUR_LOCAL static void AddReference(allocator_interface* object) noexcept
    {
        if (object != nullptr) object->AddReference();
    }

    MUR_LOCAL static void ReleaseReference(allocator_interface* object) noexcept
    {
        if (object != nullptr) object->ReleaseReference();
    }

    MUR_LOCAL static void* Allocate(allocator_interface* object, std::size_t bytes) noexcept
    {
        return object != nullptr ? object->Allocate(bytes) : std::malloc(bytes);
    }

    MUR_LOCAL static void Free(allocator_interface* object, void* memory) noexcept
    {
        if (object != nullptr)
            object->Free(memory);
        else
            std::free(memory);
    }
};

} // namespace mur
