/**
 * The configuration by section: one record, one getter and one setter for each section.
 *
 * A getter reads a complete section into a record of the caller, a setter writes a record back.
 * Fields have the names of their keys and are in the order in which the keys are visited. An array
 * field `ip` holds the values of keys "ip[0]", "ip[1]" and so on. config.h describes how one value
 * is read or written.
 *
 * Types        number      decimal or hexadecimal number in the store, see __cfc_get_u32()
 *              IPv4        dotted quad in the store; in the record a number whose most significant
 *                          byte is the first part
 *              string      as many characters as the field's line says, and a NUL. The store
 *                          accepts at most 199, so larger fields are never filled
 *              bytes       hexadecimal string in the store, see __cfc_get_binary()
 *              Values are passed on unchanged. The applications define the meaning of codes,
 *              switches and option lines: such fields are marked as not interpreted. Only
 *              gui_get_offsetTime() and the editors of the MAC access list interpret a field.
 *
 * Lock         Every getter and setter takes the access lock before its first exchange and releases
 *              it after the last, so that a section is read or written as a unit. The lock is not
 *              recursive: a caller that already holds it would block indefinitely. The only memory
 *              that a getter or setter allocates is one request at a time. None keeps the pointer.
 * Blocking     One exchange per value, each as described in config.h: no time limit.
 * Null         Unless a function says otherwise, its pointer is not tested: null is the caller's
 *              error and ends the program.
 *
 * Stop rule    Keys are visited in the order of the record. The first failure of a key that is not
 *              an array element ends the walk: its code is the result, and later keys are not
 *              visited.
 * Array rule   An array is always visited to its end. Only the result of its last element counts,
 *              so that a list with missing elements can be read: a failure of an earlier element is
 *              ignored, and the walk continues.
 *
 * Getters      CFC_OK                          every key was read, except for ignored elements
 *              CFC_ERR_NO_SEM, CFC_ERR_NO_MSQ  no service runs; the record is untouched
 *              CFC_ERR_NO_SECTION              the section does not exist
 *              CFC_ERR_NO_KEY                  the section lacks the key that ended the walk
 *              or a code of "Exchange" in config.h, or a value code of the types in the section:
 *                numbers    CFC_ERR_NO_ROOM, CFC_ERR_BAD_ARGUMENT (empty), CFC_ERR_BAD_DIGIT,
 *                           CFC_ERR_OVERFLOW; CFC_ERR_BAD_VALUE for one too large for 8 or 16 bits
 *                addresses  CFC_ERR_NO_ROOM, CFC_ERR_NOT_AN_ADDRESS
 *                strings    CFC_ERR_NO_ROOM: longer than the field; it is not truncated
 *                bytes      CFC_ERR_NO_ROOM, CFC_ERR_BAD_VALUE
 *              After a failure the fields before the failing one hold the values just read, and the
 *              fields after it are untouched. The failing field is untouched too, with two
 *              exceptions: a value that is not a number leaves 0 in a field of 32 bits, and a value
 *              that is not hexadecimal leaves zeros, and the bytes decoded before the error, in a
 *              field of bytes.
 *
 * Setters      CFC_OK                          every key was written, except for ignored elements
 *              CFC_ERR_NO_SEM, CFC_ERR_NO_MSQ  no service runs; nothing was written
 *              CFC_ERR_NO_SECTION              the section does not exist
 *              or a code of "Exchange" in config.h, or a value code: for strings,
 *              CFC_ERR_BAD_ARGUMENT for one of 200 characters or more, or with CR or LF.
 *              Values written before a failure stay written. A missing key is created. A restart
 *              loses what was written unless it is flushed first, with cfc_flush_all_nosem().
 */
#ifndef PROREFLAX_SECTIONS_H
#define PROREFLAX_SECTIONS_H

#include <proreflax/result.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Panel and network ---------------------------------------------------------------------- */

/** Section "PANEL_WIRELESS". The alarm panel's wireless link. */
typedef struct pal_wl_info {
  uint32_t wep_encryption; /**< number: code, not interpreted by this library */
  uint32_t key_mode;       /**< number: code, not interpreted by this library */
} pal_wl_info;

/** Reads the section into *out. 2 exchanges. @return "Getters"; value codes of numbers */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_pal_wl_info(pal_wl_info* out);
/** Writes *in, only read, to the section. 2 exchanges. @return "Setters" */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_pal_wl_info(const pal_wl_info* in);

/** Section "PANEL_POLLING". The server that the alarm panel polls. */
typedef struct pal_polling_info {
  char host[64]; /**< string, 63 characters: the server's name or address */
  uint32_t port; /**< number: the server's port */
  char url[64];  /**< string, 63 characters: path that is polled */
  char url1[64]; /**< string, 63 characters: second path */
  /** number: time between two polls; its unit is the applications' choice */
  uint32_t interval;
} pal_polling_info;

/**
 * Reads the section into *out. 5 exchanges. @return "Getters"; value codes of strings and numbers
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_pal_polling_info(pal_polling_info* out);
/** Writes *in, only read, to the section. 5 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_pal_polling_info(const pal_polling_info* in);

/** Section "PANEL_IPVAD". The panel's IP video alarm service. */
typedef struct pal_ipvad_info {
  uint32_t enable; /**< number: switch, not interpreted by this library */
  char host[64];   /**< string, 63 characters: the service's name or address */
  uint32_t port;   /**< number: the service's port */
  char name[64];   /**< string, 63 characters: name under which the panel reports */
  char desc[256];  /**< string, 255 characters: description of the panel */
} pal_ipvad_info;

/**
 * Reads the section into *out. 5 exchanges. @return "Getters"; value codes of numbers and strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_pal_ipvad_info(pal_ipvad_info* out);
/** Writes *in, only read, to the section. 5 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_pal_ipvad_info(const pal_ipvad_info* in);

/** Section "PANEL_DDNS". The panel's name in the dynamic DNS. */
typedef struct pal_ddns_info {
  char domain[64]; /**< string, 63 characters: the panel's domain name */
  char port[8];    /**< string, 7 characters: port; here a string, not a number */
} pal_ddns_info;

/** Reads the section into *out. 2 exchanges. @return "Getters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_pal_ddns_info(pal_ddns_info* out);
/** Writes *in, only read, to the section. 2 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_pal_ddns_info(const pal_ddns_info* in);

/**
 * Section "PANEL_CENTER_IP". The alarm centre that the panel reports to. Both fields are strings,
 * the port too.
 */
typedef struct center_ip_info {
  char center_ip[64];  /**< string, 63 characters: the centre's name or address */
  char center_port[8]; /**< string, 7 characters: the centre's port */
} center_ip_info;

/** Reads the section into *out. 2 exchanges. @return "Getters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_center_ip_info(center_ip_info* out);
/** Writes *in, only read, to the section. 2 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_center_ip_info(const center_ip_info* in);

/** Section "PANEL_VERSION". Which version of the panel's settings this is. */
typedef struct version_info {
  uint16_t signature; /**< number: version code, not interpreted by this library */
} version_info;

/** Reads the section into *out. 1 exchange. @return "Getters"; value codes of numbers */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_version_info(version_info* out);
/** Writes *in, only read, to the section. 1 exchange. @return "Setters" */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_version_info(const version_info* in);

/** Section "PANEL_SNTP_TIME". The panel's clock. */
typedef struct sntp_info {
  uint32_t sync;     /**< number: switch, not interpreted by this library */
  char tz[128];      /**< string, 127 characters: time zone */
  char timesvr[128]; /**< string, 127 characters: time server */
} sntp_info;

/**
 * Reads the section into *out. 3 exchanges. @return "Getters"; value codes of numbers and strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_sntp_info(sntp_info* out);
/** Writes *in, only read, to the section. 3 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_sntp_info(const sntp_info* in);

/** Section "PANEL_OPTS". Ten free options of the panel. Ten separate keys, not an array. */
typedef struct opts_info {
  char key01[128]; /**< string, 127 characters: option 1, not interpreted by this library */
  char key02[128]; /**< string, 127 characters: option 2, not interpreted by this library */
  char key03[128]; /**< string, 127 characters: option 3, not interpreted by this library */
  char key04[128]; /**< string, 127 characters: option 4, not interpreted by this library */
  char key05[128]; /**< string, 127 characters: option 5, not interpreted by this library */
  char key06[128]; /**< string, 127 characters: option 6, not interpreted by this library */
  char key07[128]; /**< string, 127 characters: option 7, not interpreted by this library */
  char key08[128]; /**< string, 127 characters: option 8, not interpreted by this library */
  char key09[128]; /**< string, 127 characters: option 9, not interpreted by this library */
  char key10[128]; /**< string, 127 characters: option 10, not interpreted by this library */
} opts_info;

/** Reads the section into *out. 10 exchanges. @return "Getters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_opts_info(opts_info* out);
/**
 * Writes *in, only read, to the section. 10 exchanges. @return "Setters"; value codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_opts_info(const opts_info* in);

/** Section "UPNP". Port redirection by UPnP. */
typedef struct upnp_info {
  uint32_t upnpd;        /**< number: code, not interpreted by this library */
  uint32_t port_redir;   /**< number: code, not interpreted by this library */
  uint32_t web_port;     /**< number: port of the web interface inside */
  uint32_t web_ext_port; /**< number: port of the web interface outside */
  char web_proto[8];     /**< string, 7 characters: protocol of the redirection */
} upnp_info;

/**
 * Reads the section into *out. 5 exchanges. @return "Getters"; value codes of numbers and strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_upnp_info(upnp_info* out);
/** Writes *in, only read, to the section. 5 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_upnp_info(const upnp_info* in);

/** Section "LAN". The device's own addresses. */
typedef struct lan_info {
  /** number: how the address is obtained: code, not interpreted by this library */
  uint32_t ConnType;
  uint32_t LanIPAddr;  /**< IPv4: the device's address */
  uint32_t LanNetmask; /**< IPv4: its netmask */
  uint32_t LanGw;      /**< IPv4: its gateway */
  uint32_t DnsSrv1;    /**< IPv4: first name server */
  uint32_t DnsSrv2;    /**< IPv4: second name server */
} lan_info;

/**
 * Reads the section into *out. 6 exchanges. @return "Getters"; value codes of numbers and
 * addresses
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_lan_info(lan_info* out);
/** Writes *in, only read, to the section. 6 exchanges. @return "Setters" */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_lan_info(const lan_info* in);

/**
 * Reads only the device's own address and netmask, keys "LanIPAddr" and "LanNetmask" of section
 * "LAN". 2 exchanges.
 *
 * @param address  receives the address; untouched when it cannot be read
 * @param netmask  receives the netmask; untouched by every failure
 * @return the results of "Getters", with the value codes of addresses; CFC_ERR_NOT_AN_ADDRESS also
 *         for a null pointer, after its value was read, with address filled when only netmask is
 *         null
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_lan_ip_setting(uint32_t* address,
                                                                uint32_t* netmask);

/**
 * Writes only the device's own address and netmask. 2 exchanges.
 *
 * @param address  its first part in the most significant byte: 192.168.62.1 is 0xC0A83E01
 * @param netmask  its first part in the most significant byte, too
 * @return the results of "Setters"; the address stays written when only the netmask fails
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_lan_ip_setting(uint32_t address, uint32_t netmask);

/** Section "SNTPC". The time client. gui_get_offsetTime() reads tzdetail and dststatus. */
typedef struct sntpc_info {
  uint32_t enable;     /**< number: switch, not interpreted by this library */
  uint32_t ipsel;      /**< number: code, not interpreted by this library */
  uint32_t server_ip;  /**< IPv4: first time server */
  uint32_t server_ip2; /**< IPv4: second time server */
  uint32_t tzid;       /**< number: number of the zone, not interpreted by this library */
  char tzdetail[100];  /**< string, 99 characters: the zone, such as "(GMT+08:00) Beijing" */
  uint32_t dststatus;  /**< number: 1 while daylight saving time is active */
} sntpc_info;

/**
 * Reads the section into *out. 7 exchanges. @return "Getters"; value codes of numbers, addresses
 * and strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_sntpc_info(sntpc_info* out);
/** Writes *in, only read, to the section. 7 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_sntpc_info(const sntpc_info* in);

/** Section "DDNS". The dynamic DNS client. */
typedef struct ddns_info {
  uint32_t enable;  /**< number: switch, not interpreted by this library */
  char user[128];   /**< string, 127 characters: account */
  char passwd[128]; /**< string, 127 characters: its password */
  char domain[128]; /**< string, 127 characters: name to keep up to date */
  char server[128]; /**< string, 127 characters: the provider's server */
} ddns_info;

/**
 * Reads the section into *out. 5 exchanges. @return "Getters"; value codes of numbers and strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_ddns_info(ddns_info* out);
/** Writes *in, only read, to the section. 5 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_ddns_info(const ddns_info* in);

/** Section "SMTPC". The mail client. */
typedef struct smtpc_info {
  uint32_t enable;   /**< number: switch, not interpreted by this library */
  char user[128];    /**< string, 127 characters: account */
  char passwd[128];  /**< string, 127 characters: its password */
  char sender[128];  /**< string, 127 characters: sender's address */
  char receipt[128]; /**< string, 127 characters: recipient's address */
  char server[128];  /**< string, 127 characters: mail server */
} smtpc_info;

/**
 * Reads the section into *out. 6 exchanges. @return "Getters"; value codes of numbers and strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_smtpc_info(smtpc_info* out);
/** Writes *in, only read, to the section. 6 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_smtpc_info(const smtpc_info* in);

/** Section "SYSTEMUTS". The device's names. */
typedef struct system_uts_info {
  char hostname[32];   /**< string, 31 characters: host name */
  char domainname[32]; /**< string, 31 characters: domain name */
  char realm_name[32]; /**< string, 31 characters: realm of the web interface's login */
  uint16_t webs_port;  /**< number: port of the web interface */
} system_uts_info;

/**
 * Reads the section into *out. 4 exchanges. @return "Getters"; value codes of strings and numbers
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_system_uts_info(system_uts_info* out);
/** Writes *in, only read, to the section. 4 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_system_uts_info(const system_uts_info* in);

/** Section "SURVEILLANCE". Up to eight cameras that are watched. */
typedef struct surv_info {
  char ip[8][16];     /**< 8 strings, 15 characters: each camera's address */
  char port[8][6];    /**< 8 strings, 5 characters: its port */
  char user[8][65];   /**< 8 strings, 64 characters: account on it */
  char passwd[8][65]; /**< 8 strings, 64 characters: password of the account */
  char name[8][33];   /**< 8 strings, 32 characters: name to show */
} surv_info;

/**
 * Reads the section into *out. 40 exchanges; array rule: ip, port, user, passwd, name. @return
 * "Getters"; value codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_surv_info(surv_info* out);
/**
 * Writes *in, only read, to the section. 40 exchanges; array rule: ip, port, user, passwd, name.
 * @return "Setters"; value codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_surv_info(const surv_info* in);

/** Section "SURV2". Further options of the eight watched cameras. */
typedef struct surv2_info {
  /** 8 strings, 299 characters: each camera's options, not interpreted by this library */
  char opt[8][300];
} surv2_info;

/**
 * Reads the section into *out. 8 exchanges; array rule: opt. @return "Getters"; value codes of
 * strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_surv2_info(surv2_info* out);
/**
 * Writes *in, only read, to the section. 8 exchanges; array rule: opt. @return "Setters"; value
 * codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_surv2_info(const surv2_info* in);

/** Section "USERS_DB". Up to ten users of the web interface. */
typedef struct usersdb_info {
  char name[10][32];   /**< 10 strings, 31 characters: each user's name */
  char passwd[10][32]; /**< 10 strings, 31 characters: password */
  char policy[10][8];  /**< 10 strings, 7 characters: rights, not interpreted by this library */
} usersdb_info;

/**
 * Reads the section into *out. 30 exchanges; array rule: name, passwd, policy. @return "Getters";
 * value codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_usersdb_info(usersdb_info* out);
/**
 * Writes *in, only read, to the section. 30 exchanges; array rule: name, passwd, policy. @return
 * "Setters"; value codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_usersdb_info(const usersdb_info* in);

/** Section "RPTIPS_DB". The two receivers of reports. */
typedef struct rptipsdb_info {
  char host[2][64]; /**< 2 strings, 63 characters: each receiver's name or address */
  char port[2][8];  /**< 2 strings, 7 characters: its port */
} rptipsdb_info;

/**
 * Reads the section into *out. 4 exchanges; array rule: host, port. @return "Getters"; value codes
 * of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_rptipsdb_info(rptipsdb_info* out);
/**
 * Writes *in, only read, to the section. 4 exchanges; array rule: host, port. @return "Setters";
 * value codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_rptipsdb_info(const rptipsdb_info* in);

/* ---- Camera and wireless -------------------------------------------------------------------- */

/**
 * Section "SNXCAM". The camera with the SNX sensor. Its keys differ from those of ovcam_info.
 */
typedef struct snxcam_info {
  uint16_t framerate;  /**< number: frame rate, not interpreted by this library */
  uint16_t width;      /**< number: width of the picture */
  uint16_t height;     /**< number: height of the picture */
  uint16_t compress;   /**< number: code, not interpreted by this library */
  uint16_t brightness; /**< number: brightness */
  uint16_t contrast;   /**< number: contrast */
  uint16_t gamma;      /**< number: gamma */
  uint16_t hue;        /**< number: hue */
  uint16_t saturation; /**< number: saturation */
  uint16_t sharpness;  /**< number: sharpness */
  uint16_t flicker;    /**< number: code, not interpreted by this library */
} snxcam_info;

/** Reads the section into *out. 11 exchanges. @return "Getters"; value codes of numbers */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_snxcam_info(snxcam_info* out);
/** Writes *in, only read, to the section. 11 exchanges. @return "Setters" */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_snxcam_info(const snxcam_info* in);

/**
 * Section "OVCAM". The camera with the OV sensor. Its keys differ from those of snxcam_info.
 */
typedef struct ovcam_info {
  uint16_t framerate;   /**< number: frame rate, not interpreted by this library */
  uint16_t width;       /**< number: width of the picture */
  uint16_t height;      /**< number: height of the picture */
  uint16_t compress;    /**< number: code, not interpreted by this library */
  uint16_t brightness;  /**< number: brightness */
  uint16_t contrast;    /**< number: contrast */
  uint16_t saturation;  /**< number: saturation */
  uint16_t light_freq;  /**< number: code, not interpreted by this library */
  uint16_t mirror;      /**< number: switch, not interpreted by this library */
  uint16_t flip;        /**< number: switch, not interpreted by this library */
  uint16_t led_control; /**< number: code, not interpreted by this library */
} ovcam_info;

/** Reads the section into *out. 11 exchanges. @return "Getters"; value codes of numbers */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_ovcam_info(ovcam_info* out);
/** Writes *in, only read, to the section. 11 exchanges. @return "Setters" */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_ovcam_info(const ovcam_info* in);

/**
 * Section "WLS_DOMAIN". The regulatory domain of the access point. The array comes first: its last
 * element decides whether the other fields are visited.
 */
typedef struct wls_domain_info {
  char test[10][20];     /**< 10 strings, 19 characters, not interpreted by this library */
  uint32_t status;       /**< number: code, not interpreted by this library */
  uint32_t zone_num;     /**< number: number of the zone, not interpreted by this library */
  uint16_t channel_list; /**< number: code, not interpreted by this library */
  uint16_t choiced_channel_numbers; /**< number: how many channels are chosen */
  /** 16 bytes: the chosen channels, not interpreted by this library */
  unsigned char choiced_channel_list[16];
  char domain_name[8]; /**< string, 7 characters: the domain's name */
} wls_domain_info;

/**
 * Reads the section into *out. 16 exchanges; array rule: test. @return "Getters"; value codes of
 * strings, numbers and bytes
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_wls_domain_info(wls_domain_info* out);
/**
 * Writes *in, only read, to the section. 16 exchanges; array rule: test. @return "Setters"; value
 * codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_wls_domain_info(const wls_domain_info* in);

/** Section "WIRELESS". The access point's main settings. */
typedef struct wireless_config {
  uint32_t enabled;            /**< number: switch, not interpreted by this library */
  uint32_t conn_type;          /**< number: code, not interpreted by this library */
  uint32_t domain;             /**< number: regulatory domain; here a number, not a string */
  uint32_t channel;            /**< number: radio channel */
  char essid[65];              /**< string, 64 characters: network name */
  unsigned char apmac[6];      /**< 6 bytes: MAC address of the access point */
  uint32_t hessid;             /**< number: not an address, not interpreted by this library */
  uint32_t beacon_interval;    /**< number: time between two beacons */
  uint32_t rts_threshold;      /**< number: RTS threshold */
  uint32_t fg_threshold;       /**< number: fragmentation threshold */
  uint32_t dtim_interval;      /**< number: DTIM interval */
  uint32_t basic_rate_flag;    /**< number: code, not interpreted by this library */
  uint32_t tx_rate_flag;       /**< number: code, not interpreted by this library */
  uint32_t preamble_type_flag; /**< number: code, not interpreted by this library */
  uint32_t ap_power;           /**< number: code, not interpreted by this library */
  uint32_t wan_port_link;      /**< number: code, not interpreted by this library */
  uint32_t user_isolate;       /**< number: code, not interpreted by this library */
  uint32_t user_access;        /**< number: code, not interpreted by this library */
  uint32_t load_balance;       /**< number: code, not interpreted by this library */
  uint32_t ssid_any;           /**< number: code, not interpreted by this library */
  uint32_t enhanced_security;  /**< number: code, not interpreted by this library */
  uint32_t auth_type;          /**< number: code, not interpreted by this library */
  uint32_t accesscontrol;      /**< number: code, not interpreted by this library */
  uint32_t wepkey;             /**< number: code, not interpreted by this library */
  uint32_t default_key;        /**< number: code, not interpreted by this library */
  /** string, 26 characters: WEP key 1; counted from 1 here, from 0 in WLS_WEP */
  char wepkey_1[27];
  char wepkey_2[27];        /**< string, 26 characters: WEP key 2 */
  char wepkey_3[27];        /**< string, 26 characters: WEP key 3 */
  char wepkey_4[27];        /**< string, 26 characters: WEP key 4 */
  uint32_t encryModeSel;    /**< number: code, not interpreted by this library */
  uint32_t max_users_allow; /**< number: maximum number of stations at a time */
  uint32_t rfmode;          /**< number: code, not interpreted by this library */
  uint32_t wds_mode;        /**< number: code, not interpreted by this library */
  uint32_t tx_rate;         /**< number: code, not interpreted by this library */
  uint32_t key_select;      /**< number: code, not interpreted by this library */
} wireless_config;

/**
 * Reads the section into *out. 35 exchanges. @return "Getters"; value codes of numbers, strings and
 * bytes
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_wireless_config(wireless_config* out);
/**
 * Writes *in, only read, to the section. 35 exchanges. @return "Setters"; value codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_wireless_config(const wireless_config* in);

/** Section "WLS_WEP". The WEP keys. The spelling "wileless" is part of the interface. */
typedef struct wileless_wepkey_cfg {
  uint32_t keylength;               /**< number: code, not interpreted by this library */
  uint32_t keytype;                 /**< number: code, not interpreted by this library */
  uint32_t manualtype;              /**< number: code, not interpreted by this library */
  uint32_t default_key;             /**< number: code, not interpreted by this library */
  unsigned char wep_passphrase[33]; /**< 33 bytes: pass phrase */
  unsigned char wep_key_0[16];      /**< 16 bytes: WEP key 0 */
  unsigned char wep_key_1[16];      /**< 16 bytes: WEP key 1 */
  unsigned char wep_key_2[16];      /**< 16 bytes: WEP key 2 */
  unsigned char wep_key_3[16];      /**< 16 bytes: WEP key 3 */
} wileless_wepkey_cfg;

/** Reads the section into *out. 9 exchanges. @return "Getters"; value codes of numbers and bytes */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_wileless_wepkey_cfg(wileless_wepkey_cfg* out);
/** Writes *in, only read, to the section. 9 exchanges. @return "Setters" */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_wileless_wepkey_cfg(const wileless_wepkey_cfg* in);

/** Section "WLS_EXT". The 802.1X authentication server. */
typedef struct wls_cfg_ext {
  uint8_t ext_flag;         /**< number: code, not interpreted by this library */
  uint16_t op_mode;         /**< number: code, not interpreted by this library */
  uint16_t hostap_1x_flags; /**< number: code, not interpreted by this library */
  /** number: server's IPv4 address; stored as a number, not as a dotted quad */
  uint32_t svr_addr;
  uint32_t svr_port;                   /**< number: server's port */
  unsigned char svr_shared_secret[32]; /**< 32 bytes: secret shared with the server */
  uint32_t key_timeout; /**< number: lifetime of a key, not interpreted by this library */
} wls_cfg_ext;

/** Reads the section into *out. 7 exchanges. @return "Getters"; value codes of numbers and bytes */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_wls_cfg_ext(wls_cfg_ext* out);
/** Writes *in, only read, to the section. 7 exchanges. @return "Setters" */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_wls_cfg_ext(const wls_cfg_ext* in);

/** Section "WLS_WPA". WPA. */
typedef struct wls_wpa_cfg {
  uint8_t wpa_key_type;  /**< number: code, not interpreted by this library */
  uint8_t wpa_key_auto;  /**< number: code, not interpreted by this library */
  char passphrase[64];   /**< string, 63 characters: pass phrase */
  unsigned char PMK[32]; /**< 32 bytes: pairwise master key */
  uint32_t key_timeout;  /**< number: lifetime of a key, not interpreted by this library */
} wls_wpa_cfg;

/**
 * Reads the section into *out. 5 exchanges. @return "Getters"; value codes of numbers, strings and
 * bytes
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_wls_wpa_cfg(wls_wpa_cfg* out);
/** Writes *in, only read, to the section. 5 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_wls_wpa_cfg(const wls_wpa_cfg* in);

/**
 * Section "WLS_ACL". The MAC access list. 80 exchanges; only the result of the last entry counts.
 * gui_wls_ac_add() and gui_wls_ac_delete() edit it.
 */
typedef struct wls_mac_ac {
  /** 80 times 6 bytes: MAC addresses; all zero: a free slot */
  unsigned char macFilters[80][6];
} wls_mac_ac;

/**
 * Reads the section into *out. 80 exchanges; array rule: macFilters. @return "Getters"; value
 * codes of bytes
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_wls_mac_ac(wls_mac_ac* out);
/**
 * Writes *in, only read, to the section. 80 exchanges; array rule: macFilters. @return "Setters"
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_wls_mac_ac(const wls_mac_ac* in);

/**
 * Adds an address to the MAC access list, in its lowest free slot. If the list already contains the
 * address, nothing is written.
 *
 * Lock: held while the list is read, and again while it is written, but not in between. An edit
 * that another process makes in between is lost; applications that must exclude this serialise
 * their edits. 80 exchanges, or 160 when the list changes.
 *
 * @param mac  6 bytes
 * @return CFC_OK                the address is in the list
 *         CFC_FAILED            mac is all zero, which marks a free slot; or the list is full
 *         CFC_ERR_BAD_ARGUMENT  mac is null
 *         or the result of gui_get_wls_mac_ac() or gui_set_wls_mac_ac()
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_wls_ac_add(const unsigned char* mac);

/**
 * Removes every occurrence of an address from the MAC access list. Other entries keep their slots.
 * Lock and cost are those of gui_wls_ac_add().
 *
 * @param mac  6 bytes
 * @return CFC_OK                the address is not in the list; if mac is all zero, nothing was
 *                               done
 *         CFC_ERR_BAD_ARGUMENT  mac is null
 *         or the result of gui_get_wls_mac_ac() or gui_set_wls_mac_ac()
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_wls_ac_delete(const unsigned char* mac);

/** Section "WLS_WDS". The peers of the wireless distribution system. */
typedef struct wls_wds_cfg {
  uint16_t enable;             /**< number: switch, not interpreted by this library */
  unsigned char macaddr[8][6]; /**< 8 times 6 bytes: each peer's MAC address */
} wls_wds_cfg;

/**
 * Reads the section into *out. 9 exchanges; array rule: macaddr. @return "Getters"; value codes of
 * numbers and bytes
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_wls_wds_cfg(wls_wds_cfg* out);
/** Writes *in, only read, to the section. 9 exchanges; array rule: macaddr. @return "Setters" */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_wls_wds_cfg(const wls_wds_cfg* in);

/** Section "DHCP". The DHCP server. */
typedef struct dhcp_cfg {
  uint32_t srv_flag;   /**< number: code, not interpreted by this library */
  uint32_t start_ip;   /**< IPv4: first address that is leased */
  uint32_t end_ip;     /**< IPv4: last address that is leased */
  uint32_t Lease_Time; /**< number: duration of a lease; its unit is the applications' choice */
  char interface[16];  /**< string, 15 characters: network interface served */
} dhcp_cfg;

/**
 * Reads the section into *out. 5 exchanges. @return "Getters"; value codes of numbers, addresses
 * and strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_dhcp_cfg(dhcp_cfg* out);
/** Writes *in, only read, to the section. 5 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_dhcp_cfg(const dhcp_cfg* in);

/** Section "PPPOE". The PPPoE client. */
typedef struct pppoe_cfg {
  char interface[16]; /**< string, 15 characters: network interface used */
  char user[129];     /**< string, 128 characters: account */
  char passwd[129];   /**< string, 128 characters: its password */
  uint16_t mss;       /**< number: largest TCP segment, bytes */
} pppoe_cfg;

/**
 * Reads the section into *out. 4 exchanges. @return "Getters"; value codes of strings and numbers
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_pppoe_cfg(pppoe_cfg* out);
/** Writes *in, only read, to the section. 4 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_pppoe_cfg(const pppoe_cfg* in);

/** Section "USER_MGMT". The user management's records. */
typedef struct user_mgmt_cfg {
  /** 20 times 98 bytes: opaque, not interpreted by this library */
  unsigned char records[20][98];
} user_mgmt_cfg;

/**
 * Reads the section into *out. 20 exchanges; array rule: records. @return "Getters"; value codes
 * of bytes
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_user_mgmt_cfg(user_mgmt_cfg* out);
/** Writes *in, only read, to the section. 20 exchanges; array rule: records. @return "Setters" */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_user_mgmt_cfg(const user_mgmt_cfg* in);

/* ---- Device, sensors and services ----------------------------------------------------------- */

/** Section "SYSBASE". What the device runs. The accessors take the string itself. */
typedef struct sysbase_info {
  char firmware_ver[256]; /**< string, 255 characters: version of the firmware */
} sysbase_info;

/**
 * Reads section "SYSBASE". 1 exchange.
 *
 * @param firmware_ver  receives the string and its NUL; must have room for 256 bytes
 * @return the results of "Getters", with the value codes of strings; untouched by every failure
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_sysbase_info(char* firmware_ver);

/**
 * Writes section "SYSBASE". 1 exchange.
 *
 * @param firmware_ver  the string, at most 199 characters without CR or LF; only read
 * @return the results of "Setters", with the value codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_sysbase_info(const char* firmware_ver);

/** Section "DEVICE". Options of the device. The accessors take the string itself. */
typedef struct device_cfg {
  char opt[256]; /**< string, 255 characters: options, not interpreted by this library */
} device_cfg;

/**
 * Reads section "DEVICE". 1 exchange.
 *
 * @param opt  receives the string and its NUL; must have room for 256 bytes
 * @return the results of "Getters", with the value codes of strings; untouched by every failure
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t get_device_cfg(char* opt);

/**
 * Writes section "DEVICE". 1 exchange.
 *
 * @param opt  the string, at most 199 characters without CR or LF; only read
 * @return the results of "Setters", with the value codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t set_device_cfg(const char* opt);

/** Section "SENSORS". The sensors: 101, index 0 to 100. */
typedef struct sensors_cfg {
  /** 101 strings, 255 characters: each sensor's data line, not interpreted by this library */
  char sdata[101][256];
  char sname[101][64]; /**< 101 strings, 63 characters: its name */
} sensors_cfg;

/**
 * Reads the section into *out. 202 exchanges; array rule: sdata, sname. @return "Getters"; value
 * codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t get_sensors_cfg(sensors_cfg* out);
/**
 * Writes *in, only read, to the section. 202 exchanges; array rule: sdata, sname. @return
 * "Setters"; value codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t set_sensors_cfg(const sensors_cfg* in);

/** Section "GSM". The GSM modem. */
typedef struct gsm_cfg {
  uint32_t band;   /**< number: code, not interpreted by this library */
  char pin[8];     /**< string, 7 characters: PIN of the SIM card */
  char apn[32];    /**< string, 31 characters: access point name */
  char user[32];   /**< string, 31 characters: account */
  char passwd[32]; /**< string, 31 characters: its password */
  char opt[256];   /**< string, 255 characters: options, not interpreted by this library */
} gsm_cfg;

/**
 * Reads the section into *out. 6 exchanges. @return "Getters"; value codes of numbers and strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t get_gsm_cfg(gsm_cfg* out);
/** Writes *in, only read, to the section. 6 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t set_gsm_cfg(const gsm_cfg* in);

/** Section "REPORTING". The servers that events are reported to. */
typedef struct reporting_cfg {
  uint32_t k_op;     /**< number: code, not interpreted by this library */
  char url[10][128]; /**< 10 strings, 127 characters: each server's URL */
  char opt[256];     /**< string, 255 characters: options, not interpreted by this library */
} reporting_cfg;

/**
 * Reads the section into *out. 12 exchanges; array rule: url. @return "Getters"; value codes of
 * numbers and strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t get_reporting_cfg(reporting_cfg* out);
/**
 * Writes *in, only read, to the section. 12 exchanges; array rule: url. @return "Setters"; value
 * codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t set_reporting_cfg(const reporting_cfg* in);

/** Section "POLL2". The servers that are polled, second set. */
typedef struct poll2_cfg {
  char url1[128]; /**< string, 127 characters: first URL */
  char url2[128]; /**< string, 127 characters: second URL */
  char opt[256];  /**< string, 255 characters: options, not interpreted by this library */
} poll2_cfg;

/** Reads the section into *out. 3 exchanges. @return "Getters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t get_poll2_cfg(poll2_cfg* out);
/** Writes *in, only read, to the section. 3 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t set_poll2_cfg(const poll2_cfg* in);

/** Section "POLL3". The servers that are polled, third set. */
typedef struct poll3_cfg {
  char url[10][128]; /**< 10 strings, 127 characters: each server's URL */
  char opt[256];     /**< string, 255 characters: options, not interpreted by this library */
} poll3_cfg;

/**
 * Reads the section into *out. 11 exchanges; array rule: url. @return "Getters"; value codes of
 * strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t get_poll3_cfg(poll3_cfg* out);
/**
 * Writes *in, only read, to the section. 11 exchanges; array rule: url. @return "Setters"; value
 * codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t set_poll3_cfg(const poll3_cfg* in);

/** Section "UPLOAD". Where pictures are uploaded. Its record is laid out as poll3_cfg. */
typedef struct upload_cfg {
  char url[10][128]; /**< 10 strings, 127 characters: each target's URL */
  char opt[256];     /**< string, 255 characters: options, not interpreted by this library */
} upload_cfg;

/**
 * Reads the section into *out. 11 exchanges; array rule: url. @return "Getters"; value codes of
 * strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t get_upload_cfg(upload_cfg* out);
/**
 * Writes *in, only read, to the section. 11 exchanges; array rule: url. @return "Setters"; value
 * codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t set_upload_cfg(const upload_cfg* in);

/** Section "IPFILTER". The IP filter. Its "rule" is unrelated to that of HARULES. */
typedef struct ipfilter_cfg {
  /** 20 strings, 63 characters: each rule, not interpreted by this library */
  char rule[20][64];
  char opt[256]; /**< string, 255 characters: options, not interpreted by this library */
} ipfilter_cfg;

/**
 * Reads the section into *out. 21 exchanges; array rule: rule. @return "Getters"; value codes of
 * strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t get_ipfilter_cfg(ipfilter_cfg* out);
/**
 * Writes *in, only read, to the section. 21 exchanges; array rule: rule. @return "Setters"; value
 * codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t set_ipfilter_cfg(const ipfilter_cfg* in);

/** Section "XMPP". XMPP messaging. */
typedef struct xmpp_cfg {
  char url[5][128];   /**< 5 strings, 127 characters: each server's URL */
  char domain[5][64]; /**< 5 strings, 63 characters: its domain */
  char buddy[256];    /**< string, 255 characters: recipient of the messages */
  char opt[256];      /**< string, 255 characters: options, not interpreted by this library */
} xmpp_cfg;

/**
 * Reads the section into *out. 12 exchanges; array rule: url, domain. @return "Getters"; value
 * codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t get_xmpp_cfg(xmpp_cfg* out);
/**
 * Writes *in, only read, to the section. 12 exchanges; array rule: url, domain. @return "Setters";
 * value codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t set_xmpp_cfg(const xmpp_cfg* in);

/** Section "PSSES". Twenty channels. */
typedef struct psses_cfg {
  /** 20 strings, 255 characters: each channel's data line, not interpreted by this library */
  char chdata[20][256];
  char chname[20][64]; /**< 20 strings, 63 characters: its name */
} psses_cfg;

/**
 * Reads the section into *out. 40 exchanges; array rule: chdata, chname. @return "Getters"; value
 * codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t get_psses_cfg(psses_cfg* out);
/**
 * Writes *in, only read, to the section. 40 exchanges; array rule: chdata, chname. @return
 * "Setters"; value codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t set_psses_cfg(const psses_cfg* in);

/** Section "SMSGW". The gateway for text messages. */
typedef struct smsgw_cfg {
  char service[64]; /**< string, 63 characters: provider */
  char user[64];    /**< string, 63 characters: account */
  char passwd[64];  /**< string, 63 characters: its password */
  char api[64];     /**< string, 63 characters: key to the provider's interface */
  char route[64];   /**< string, 63 characters: route of the messages */
  char opt[256];    /**< string, 255 characters: options, not interpreted by this library */
} smsgw_cfg;

/** Reads the section into *out. 6 exchanges. @return "Getters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t get_smsgw_cfg(smsgw_cfg* out);
/** Writes *in, only read, to the section. 6 exchanges. @return "Setters"; value codes of strings */
PROREFLAX_API PROREFLAX_CHECKED uint32_t set_smsgw_cfg(const smsgw_cfg* in);

/** Section "HARULES". The home automation rules. */
typedef struct harules_cfg {
  /** 40 strings, 255 characters: each condition, not interpreted by this library */
  char rule[40][256];
  /** 40 strings, 255 characters: the action it triggers, not interpreted by this library */
  char exec[40][256];
} harules_cfg;

/**
 * Reads the section into *out. 80 exchanges; array rule: rule, exec. @return "Getters"; value
 * codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t get_harules_cfg(harules_cfg* out);
/**
 * Writes *in, only read, to the section. 80 exchanges; array rule: rule, exec. @return "Setters";
 * value codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t set_harules_cfg(const harules_cfg* in);

/** Section "DB". A small store of rows for applications. */
typedef struct db_cfg {
  /** 20 strings, 255 characters: each row, not interpreted by this library */
  char row[20][256];
} db_cfg;

/**
 * Reads the section into *out. 20 exchanges; array rule: row. @return "Getters"; value codes of
 * strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t get_db_cfg(db_cfg* out);
/**
 * Writes *in, only read, to the section. 20 exchanges; array rule: row. @return "Setters"; value
 * codes of strings
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t set_db_cfg(const db_cfg* in);

/**
 * Reads the login of the web interface, keys "user_name" and "password" of section "WEBLOG".
 * 2 exchanges.
 *
 * @param user_name  receives the name and its NUL; must have room for 32 bytes
 * @param password   receives the password and its NUL; must have room for 32 bytes
 * @return the results of "Getters", with the value codes of strings; what is not read is untouched.
 *         CFC_FAILED when a pointer is null: the lock is not touched, nothing is read
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_web_password(char* user_name, char* password);

/**
 * Writes the login of the web interface: the name, then the password. 2 exchanges.
 * gui_get_web_password() reads names and passwords of at most 31 characters.
 *
 * @param user_name  the name, at most 199 characters without CR or LF
 * @param password   the password, at most 199 characters without CR or LF
 * @return the results of "Setters", with the value codes of strings. Null gives
 *         CFC_ERR_BAD_ARGUMENT, not CFC_FAILED as in the getter; for a null password the name is
 *         already written
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_set_web_password(const char* user_name,
                                                              const char* password);

/* ---- Local time ---------------------------------------------------------------------------- */

/**
 * The offset of local time from UTC, from section "SNTPC": in tzdetail, what follows the first "T"
 * is read as [+|-]hours[[:]minutes[[:]seconds]], at most two digits each, hours to 24; 3600 are
 * added when dststatus is 1.
 *
 * If the section cannot be read, or the zone has no "T", the result is that of the previous call (0
 * at first). A zone with a "T" that is not followed by an offset gives 0. Takes and releases the
 * lock; blocks as gui_get_sntpc_info() does. Not for two threads at the same time.
 *
 * @return the offset in seconds; negative west of Greenwich
 */
PROREFLAX_API int32_t gui_get_offsetTime(void);

/**
 * Local time as a string, such as "Wed Jun 30 21:49:08 1993\n", with its line feed. Reads the
 * clock, adds gui_get_offsetTime() and converts with localtime(): local time, on a device whose
 * clock is UTC and whose TZ is not set.
 *
 * Lock and blocking are those of gui_get_offsetTime(). Not for two threads at the same time.
 *
 * @return a string of the library that the next call overwrites; empty for a year that cannot be
 *         converted
 */
PROREFLAX_API char* gui_get_localtime(void);

/*
 * Six entry points that do nothing. They are kept for programs that link them: they do not access
 * the store, the lock or their arguments, and never block. Zone and time server are read and
 * written through section "SNTPC". Only the number of arguments is fixed. Every object pointer may
 * be passed; a program that was built with other argument types still links and runs, since C names
 * do not include types and the arguments are not used.
 */

/** Does nothing. @return 1 always */
PROREFLAX_API uint32_t gui_get_timezone(const void* zone);
/** Does nothing. @return 1 always */
PROREFLAX_API uint32_t gui_set_timezone(const void* zone);
/** Does nothing. @return 1 always */
PROREFLAX_API uint32_t gui_get_daylight_saving(const void* status, const void* start,
                                               const void* end, const void* bias);
/** Does nothing. @return 1 always */
PROREFLAX_API uint32_t gui_set_daylight_saving(const void* status, const void* start,
                                               const void* end, const void* bias);
/** Does nothing, and fills nothing. @return 0 always, unlike gui_set_time_server() */
PROREFLAX_API uint32_t gui_get_time_server(const void* mode, const void* first, const void* second);
/** Does nothing. @return 1 always */
PROREFLAX_API uint32_t gui_set_time_server(const void* mode, const void* first, const void* second);

#ifdef __cplusplus
}
#endif

#endif
