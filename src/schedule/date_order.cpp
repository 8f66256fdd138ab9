#include <atomic>
#include <climits>

#include "schedule/schedule_time.h"

namespace vantr {

namespace {
constexpr int kUnread = INT_MIN;
std::atomic<int> g_dateOrder{kUnread};
}  // namespace

int localeDateOrder() {
  int order = g_dateOrder.load();
  if (order != kUnread) return order;
  int expected = kUnread;
  order = systemDateOrder();
  // A concurrent first use may have stored its answer already; both read the
  // same source, and the first one stays.
  if (!g_dateOrder.compare_exchange_strong(expected, order)) order = expected;
  return order;
}

void setLocaleDateOrder(int order) { g_dateOrder.store(order); }

}  // namespace vantr
