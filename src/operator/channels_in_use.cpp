// SPDX-License-Identifier: MIT
// A radio's channels-in-use text, as the store holds it.
#include <cstring>

#include "core/store.hpp"

using namespace qvs;

extern "C" {

QVS_API int qvs_cuc_get_channelsinuse(int radio, char *channels) {
    if (channels == nullptr) return kFail;
    QVS_ATTACH(store, nullptr);
    if (!store) return kFail;
    QVS_IA ia = QVS_IA_VALUE(1, "%d", radio);
    const auto *rec = object<QVS_WIFI_RADIO_REC>(store.handle(), QVS_OID_WIFI_RADIO, ia);
    if (rec == nullptr) return kFail;
    // Unbounded: the caller's buffer holds the whole field (QVS_CHANNELS_IN_USE_SIZE).
    std::strcpy(channels, rec->ChannelsInUse);
    return kOk;
}

}  // extern "C"
