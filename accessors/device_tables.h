// The tables of the device's, the sensors' and the services' sections.
//
// section_rows.h defines the rows, sections.h describes the fields. The getters and setters
// that walk these tables are in device_sections.cpp.
#ifndef PROREFLAX_ACCESSORS_DEVICE_TABLES_H
#define PROREFLAX_ACCESSORS_DEVICE_TABLES_H

#include <proreflax/sections.h>

#include "accessors/section_rows.h"

namespace proreflax {

// One row per field, even if several fit on a line.
// clang-format off

template <>
struct section<sysbase_info> {
  using record = sysbase_info;
  static constexpr char name[] = "SYSBASE";
  static constexpr row rows[] = {
      FIELD("firmware_ver", firmware_ver),
  };
};

template <>
struct section<device_cfg> {
  using record = device_cfg;
  static constexpr char name[] = "DEVICE";
  static constexpr row rows[] = {
      FIELD("opt", opt),
  };
};

template <>
struct section<sensors_cfg> {
  using record = sensors_cfg;
  static constexpr char name[] = "SENSORS";
  static constexpr row rows[] = {
      FIELD("sdata[%d]", sdata),
      FIELD("sname[%d]", sname),
  };
};

template <>
struct section<gsm_cfg> {
  using record = gsm_cfg;
  static constexpr char name[] = "GSM";
  static constexpr row rows[] = {
      FIELD("band", band),
      FIELD("pin", pin),
      FIELD("apn", apn),
      FIELD("user", user),
      FIELD("passwd", passwd),
      FIELD("opt", opt),
  };
};

template <>
struct section<reporting_cfg> {
  using record = reporting_cfg;
  static constexpr char name[] = "REPORTING";
  static constexpr row rows[] = {
      FIELD("k_op", k_op),
      FIELD("url[%d]", url),
      FIELD("opt", opt),
  };
};

template <>
struct section<poll2_cfg> {
  using record = poll2_cfg;
  static constexpr char name[] = "POLL2";
  static constexpr row rows[] = {
      FIELD("url1", url1),
      FIELD("url2", url2),
      FIELD("opt", opt),
  };
};

template <>
struct section<poll3_cfg> {
  using record = poll3_cfg;
  static constexpr char name[] = "POLL3";
  static constexpr row rows[] = {
      FIELD("url[%d]", url),
      FIELD("opt", opt),
  };
};

template <>
struct section<upload_cfg> {
  using record = upload_cfg;
  static constexpr char name[] = "UPLOAD";
  static constexpr row rows[] = {
      FIELD("url[%d]", url),
      FIELD("opt", opt),
  };
};

template <>
struct section<ipfilter_cfg> {
  using record = ipfilter_cfg;
  static constexpr char name[] = "IPFILTER";
  static constexpr row rows[] = {
      FIELD("rule[%d]", rule),
      FIELD("opt", opt),
  };
};

template <>
struct section<xmpp_cfg> {
  using record = xmpp_cfg;
  static constexpr char name[] = "XMPP";
  static constexpr row rows[] = {
      FIELD("url[%d]", url),
      FIELD("domain[%d]", domain),
      FIELD("buddy", buddy),
      FIELD("opt", opt),
  };
};

template <>
struct section<psses_cfg> {
  using record = psses_cfg;
  static constexpr char name[] = "PSSES";
  static constexpr row rows[] = {
      FIELD("chdata[%d]", chdata),
      FIELD("chname[%d]", chname),
  };
};

template <>
struct section<smsgw_cfg> {
  using record = smsgw_cfg;
  static constexpr char name[] = "SMSGW";
  static constexpr row rows[] = {
      FIELD("service", service),
      FIELD("user", user),
      FIELD("passwd", passwd),
      FIELD("api", api),
      FIELD("route", route),
      FIELD("opt", opt),
  };
};

template <>
struct section<harules_cfg> {
  using record = harules_cfg;
  static constexpr char name[] = "HARULES";
  static constexpr row rows[] = {
      FIELD("rule[%d]", rule),
      FIELD("exec[%d]", exec),
  };
};

template <>
struct section<db_cfg> {
  using record = db_cfg;
  static constexpr char name[] = "DB";
  static constexpr row rows[] = {
      FIELD("row[%d]", row),
  };
};

// clang-format on

}  // namespace proreflax

#endif
