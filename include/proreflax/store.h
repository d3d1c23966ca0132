/**
 * The configuration store, for the one process that owns it: the configuration-center service.
 *
 * The store is a process-wide set of sections, each a ring of key=value entries. It is loaded from
 * INI text, changed in memory, and written back to flash as INI text. Applications use config.h
 * instead. result.h defines the conventions and all result codes.
 *
 * No function here touches the access lock, and none may run in two threads at the same time. All
 * except config_center_init(), cfc_flush_all() and config_to_default() return immediately; those
 * three run the flash tool and block until it ends.
 *
 * Descriptors 0 to 2 must be open: otherwise a file that the store writes may get the number of
 * standard output, and lines that are printed there end up in the saved configuration. A signal to
 * the process group ends the flash tool in the middle of a save, unless the caller has blocked the
 * signal; the tool inherits the signal mask.
 */
#ifndef PROREFLAX_STORE_H
#define PROREFLAX_STORE_H

#include <proreflax/result.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Records -------------------------------------------------------------------------------- */

/* The flags of config_mgmt.flags; the other 28 bits are zero. */
#define CFG_INITIALIZED UINT32_C(0x80000000) /**< set by every successful load; never tested */
#define CFG_LOADED UINT32_C(0x40000000) /**< set by every successful load; required by a flush */
#define CFG_DIRTY UINT32_C(0x20000000)  /**< a value was set since the store was last written */
#define CFG_BUSY UINT32_C(0x10000000)   /**< the store is being written out */

/** Number of hash chains: a section is in chain hash % CFG_BUCKETS. */
#define CFG_BUCKETS 8

/**
 * One entry. Its strings directly follow the record in the same allocation: the key and its NUL,
 * then the value and its NUL. cfg_item_key() and cfg_item_value() return them.
 */
typedef struct cfg_item {
  struct cfg_item* next; /**< the next entry of the ring; a single entry points to itself */
  uint32_t hash;         /**< hash of the key */
  uint8_t key_off;       /**< offset of the key after the record; always 0 */
  uint8_t key_len;       /**< characters in the key, without its NUL; 0 to 254 */
  uint8_t val_off;       /**< offset of the value after the record: key_off + key_len + 1 */
  uint8_t val_len;       /**< characters in the value, without its NUL; 0 to 255 */
} cfg_item;

/**
 * One section. Its name and NUL directly follow the record in the same allocation:
 * cfg_segment_name() returns the name.
 */
typedef struct cfg_segment {
  struct cfg_segment* bucket_next; /**< the next section of the same hash chain; null at its end */
  struct cfg_segment* list_next;   /**< the next section in order of creation; null for the last */
  uint32_t hash;                   /**< hash of the name */
  uint8_t name_off;                /**< offset of the name after the record; always 0 */
  uint8_t name_len;                /**< characters in the name, without its NUL */
  cfg_item* current;               /**< the entry last found or written; null without entries */
  cfg_item* head; /**< the entry that an export starts with; null without entries */
} cfg_segment;

/** The store's root. */
typedef struct config_mgmt {
  uint32_t flags;     /**< CFG_INITIALIZED, CFG_LOADED, CFG_DIRTY, CFG_BUSY */
  cfg_segment* cache; /**< the section last found by name or last loaded; may be null */
  cfg_segment* first; /**< the section created first; null in an empty store */
  cfg_segment* last;  /**< the section created last; null in an empty store */
  cfg_segment* buckets[CFG_BUCKETS]; /**< the heads of the hash chains */
} config_mgmt;

/** The store of this process. All zero until the first load and after a close. */
PROREFLAX_API extern config_mgmt g_config_mgmt;

#ifdef __cplusplus
#define PROREFLAX_STRING_AFTER(record) \
  static_cast<const char*>(static_cast<const void*>((record) + 1))
#else
#define PROREFLAX_STRING_AFTER(record) ((const char*)((record) + 1))
#endif

/** The name of a section, NUL-terminated. Valid as long as the section is. */
static inline const char* cfg_segment_name(const cfg_segment* section) {
  return PROREFLAX_STRING_AFTER(section) + section->name_off;
}

/** The key of an entry, NUL-terminated. Valid until the entry gets a longer value. */
static inline const char* cfg_item_key(const cfg_item* item) {
  return PROREFLAX_STRING_AFTER(item) + item->key_off;
}

/** The value of an entry, NUL-terminated. Valid until the entry gets another value. */
static inline const char* cfg_item_value(const cfg_item* item) {
  return PROREFLAX_STRING_AFTER(item) + item->val_off;
}

#undef PROREFLAX_STRING_AFTER

/* ---- Sections and values -------------------------------------------------------------------- */

/**
 * Finds the section with a name, or creates it without entries, after all others. Values can be set
 * and read immediately, also in a store that was never loaded; a flush does not write such a store.
 *
 * @param name  at most 255 bytes. The INI text allows 1 to 24 without CR or LF: a store with any
 *              other name cannot be read back from flash
 * @return the section, owned by the store and valid until it is closed or loaded again; null when
 *         the name is null or too long or no memory is left, with the store unchanged
 */
PROREFLAX_API PROREFLAX_CHECKED cfg_segment* segment_alloc(const char* name);

/**
 * Reads a value.
 *
 * @param section  name of the section
 * @param key      name of the entry
 * @param out      receives the value without a NUL; must hold the longest value, 255 bytes
 * @param length   receives the value's length in bytes
 * @return CFC_OK                the value is in out
 *         CFC_ERR_BUSY          the store is being written out
 *         CFC_ERR_BAD_ARGUMENT  section or key is null; or the key exists and out or length is null
 *         CFC_ERR_NO_SECTION    the section does not exist, as in an empty store
 *         CFC_ERR_NO_KEY        the key does not exist in the section
 *         They are tested in the order busy, section and key null, section, key, outputs null.
 *         Outputs are untouched by every failure.
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_get_val(const char* section, const char* key,
                                                     char* out, uint32_t* length);

/**
 * Writes a value. A missing entry is created, directly after the entry of the section that was last
 * read or written. Marks the store dirty, also when the value is the same as before.
 *
 * @param section  name of a section that exists
 * @param key      at most 254 bytes. The INI text allows 1 to 49 without '=' or LF, and not '[' as
 *                 the first
 * @param value    at most 255 bytes. The INI text allows 0 to 199 without LF, and requires at least
 *                 1 after a one-byte key
 * @return CFC_OK                the value is stored
 *         CFC_ERR_NO_MEMORY     no memory for the entry; the old value is kept
 *         CFC_ERR_BUSY          the store is being written out; nothing changed
 *         CFC_ERR_BAD_ARGUMENT  an argument is null; or the section exists and key or value is too
 *                               long; nothing changed
 *         CFC_ERR_NO_SECTION    the section does not exist, as in an empty store; nothing changed
 *         They are tested in the order busy, null, section, lengths.
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_set_val(const char* section, const char* key,
                                                     const char* value);

/* ---- Life cycle ----------------------------------------------------------------------------- */

/**
 * Loads the store: from flash, or, if flash has no readable configuration, from the factory file,
 * which is then written to flash. A store loaded before is released first.
 *
 * @return CFC_OK             the store is loaded
 *         CFC_ERR_NO_MEMORY  no memory for a section of the factory file
 *         CFC_ERR_BAD_VALUE  the factory file is malformed
 *         CFC_ERR_NO_FILE    the factory file cannot be opened
 *         The store is empty after every failure. Failures of the flash are not reported.
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t config_center_init(void);

/** Releases the store; the root is all zero afterwards. @return CFC_OK always */
PROREFLAX_API uint32_t config_center_close(void);

/**
 * Writes the store to flash if it is loaded and dirty. Prints " export file oK....\n" on standard
 * output when the temporary file is complete.
 *
 * @return CFC_OK                the store is on flash, or there was nothing to write
 *         CFC_ERR_WRITE         the temporary file could not be written; the store stays dirty
 *         CFC_ERR_FORK_FLASH_W  the flash tool could not be started; the store counts as clean
 *         CFC_ERR_FLASH_W       the flash tool failed; the store counts as clean
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_flush_all(void);

/**
 * Replaces the store with the factory file, and writes that file to flash.
 *
 * @return CFC_OK             the defaults are loaded; a failure to write them is not reported
 *         CFC_ERR_NO_MEMORY, CFC_ERR_BAD_VALUE, CFC_ERR_NO_FILE  as config_center_init(); the store
 *                            is empty
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t config_to_default(void);

#ifdef __cplusplus
}
#endif

#endif
