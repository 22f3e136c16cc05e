#include "tvk/values/RefCounted.h"

#include <new>

namespace tvk {

RefCounted::~RefCounted() = default;

// Built with -fno-delete-null-pointer-checks: modules call it on null through a qualified name.
void RefCounted::destroyObject() const { delete this; }

void * RefCounted::operator new(std::size_t size) { return ::operator new(size); }

void * RefCounted::operator new(std::size_t, void * place) noexcept { return place; }

void * RefCounted::operator new[](std::size_t size) { return ::operator new[](size); }

void RefCounted::operator delete(void * memory) noexcept { ::operator delete(memory); }

void RefCounted::operator delete(void *, void *) noexcept {}

void RefCounted::operator delete[](void * memory) noexcept { ::operator delete[](memory); }

}  // namespace tvk
