#include <ficon_cmi.h>
#include <stdio.h>
#include <transport/endpoint.h>

int main(void) {
  mts_handle_t fcd = ficon_mts_open(NULL, NULL, 0); /* where FICON_ENDPOINT says */
  uint32_t status = ficon_cmi_set_ficon_state(1, fcd, "", "", 1000, 20, 1);
  if (status == 0) status = ficon_cmi_user_alert_mode(1, fcd, "", "", 1000, 20, 1);
  printf("VSAN 20: status 0x%08x\n", (unsigned)status);
  ficon_mts_close(fcd);
  return status != 0;
}
