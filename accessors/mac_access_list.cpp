// The editors of the MAC access list: read the whole list, change a copy, write the whole list.
//
// A slot of six zero bytes is free. Freed slots stay empty, so that the other entries keep their
// places; an address is added in the lowest free slot. The lock is not held between reading and
// writing: an edit that another process makes in between is lost.
#include <proreflax/sections.h>

#include <cstdint>
#include <cstring>

namespace {

using mac_address = unsigned char[6];

constexpr mac_address free_slot = {};

bool equal(const unsigned char* one, const unsigned char* other) {
  return std::memcmp(one, other, sizeof(mac_address)) == 0;
}

/// The first slot that holds an address, or null.
mac_address* find(wls_mac_ac& list, const unsigned char* mac) {
  for (mac_address& slot : list.macFilters) {
    if (equal(slot, mac)) {
      return &slot;
    }
  }
  return nullptr;
}

}  // namespace

std::uint32_t gui_wls_ac_add(const unsigned char* mac) {
  if (mac == nullptr) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  if (equal(mac, free_slot)) {
    return CFC_FAILED;
  }
  wls_mac_ac list = {};  // a slot whose key is missing is free
  if (const std::uint32_t result = gui_get_wls_mac_ac(&list); result != CFC_OK) {
    return result;
  }
  if (find(list, mac) != nullptr) {
    return CFC_OK;
  }
  mac_address* slot = find(list, free_slot);
  if (slot == nullptr) {
    return CFC_FAILED;
  }
  std::memcpy(*slot, mac, sizeof *slot);
  return gui_set_wls_mac_ac(&list);
}

std::uint32_t gui_wls_ac_delete(const unsigned char* mac) {
  if (mac == nullptr) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  if (equal(mac, free_slot)) {
    return CFC_OK;
  }
  wls_mac_ac list = {};  // a slot whose key is missing is free
  if (const std::uint32_t result = gui_get_wls_mac_ac(&list); result != CFC_OK) {
    return result;
  }
  bool changed = false;
  for (mac_address& slot : list.macFilters) {
    if (equal(slot, mac)) {
      std::memset(slot, 0, sizeof slot);
      changed = true;
    }
  }
  if (!changed) {
    return CFC_OK;
  }
  return gui_set_wls_mac_ac(&list);
}
