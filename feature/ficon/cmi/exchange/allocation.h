/** Tracked memory, and the three ways in which the interface gives memory back. */
#pragma once

#include <ficon_cmi.h>

#include <cstdint>
#include <cstdlib>

namespace ficon {

/** The library's number in the memory tracker. */
inline constexpr std::uint32_t kTrackerModule = 205;

/** Tracked memory of a type, or null after a warning that names the line. Not zeroed. */
void* allocate(__tevrak_mem_type_t type, std::size_t size, int line);

/** A buffer released by `Release` unless it is handed on. */
template <class T, void (*Release)(void*)>
class Owned {
 public:
  explicit Owned(void* memory) : memory_(static_cast<T*>(memory)) {}
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  ~Owned() {
    if (memory_ != nullptr) Release(memory_);
  }

  explicit operator bool() const { return memory_ != nullptr; }
  T* get() const { return memory_; }
  T* operator->() const { return memory_; }
  T& operator[](std::size_t i) const { return memory_[i]; }

  /** Hands the buffer on: its receiver releases it. */
  T* release() {
    T* memory = memory_;
    memory_ = nullptr;
    return memory;
  }

 private:
  T* memory_;
};

/** For the caller, or the library, to release with `mtrack_free`. */
template <class T>
using Tracked = Owned<T, mtrack_free>;

/** Released with plain `free`: platform results, and the send buffers that the interface so frees.
 */
template <class T>
using Malloced = Owned<T, std::free>;

}  // namespace ficon
