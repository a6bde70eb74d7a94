#include <arpa/inet.h>
#include <ficon_cmi.h>
#include <transport/endpoint.h>

#include <cstdio>

int main() {
  mts_handle_t fcd = ficon_mts_open(nullptr, nullptr, 0);  // where FICON_ENDPOINT says
  ficon_cmi_vsan_cfg_t next{};                             // 2: the VSAN after the one named
  while (ficon_cmi_get_vsan_info(1, fcd, "", "", 1000, 2, ntohl(next.vsan), &next) == 0)
    std::printf("VSAN %u: user alert mode %d\n", ntohl(next.vsan), next.user_alert_mode);
  ficon_mts_close(fcd);
}
