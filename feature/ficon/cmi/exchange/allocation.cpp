#include "exchange/allocation.h"

#include "exchange/console.h"

namespace ficon {

void* allocate(__tevrak_mem_type_t type, std::size_t size, int line) {
  void* memory = mtrack_alloc(kTrackerModule, type, size);
  if (memory == nullptr) {
    console("Warning! Malloc Failure in %s[%d] for size %d\n", "feature/ficon/cmi/tevrak.cpp", line,
            static_cast<int>(size));
  }
  return memory;
}

}  // namespace ficon
