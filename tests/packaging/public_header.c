/* Compiles when the public header does. */
#include "ficon_cmi.h"

uint32_t alert_operators(mts_handle_t handle);

uint32_t alert_operators(mts_handle_t handle) {
  ficon_cmi_vsan_cfg_t settings;
  uint32_t status = ficon_cmi_get_vsan_info(1, handle, "", "", 0, 0, 20, &settings);
  if (status != 0 || settings.user_alert_mode != 0) {
    return status;
  }
  return ficon_cmi_user_alert_mode(1, handle, "", "", 0, 20, 1);
}
