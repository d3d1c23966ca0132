SUMMARY = "Configuration library and service of an embedded Linux device"
DESCRIPTION = "Every program of the device reads and writes its settings through the library; \
config-center owns them, writeflash keeps them over a power cut, cfc shows and changes them on a shell."
SECTION = "libs"

# The owner has not chosen a licence yet.
LICENSE = "CLOSED"

# The sources as one file beside this recipe:
#   git archive --prefix=proreflax-0.1.0/ -o proreflax-0.1.0.tar.gz HEAD
SRC_URI = "file://${BP}.tar.gz"

DEPENDS = "rapidjson"

inherit cmake bash-completion systemd update-rc.d useradd

# /sbin/writeflash is a fixed path, with and without usrmerge.
EXTRA_OECMAKE = " \
    -DPROREFLAX_BUILD_PROGRAMS=ON \
    -DPROREFLAX_STATIC_RUNTIME=ON \
    -DPROREFLAX_INIT='${PROREFLAX_INIT}' \
    -DPROREFLAX_UNIT_DIR=${systemd_system_unitdir} \
    -DCMAKE_INSTALL_SBINDIR=${base_sbindir} \
    -DCMAKE_SKIP_INSTALL_RPATH=ON \
"
PROREFLAX_INIT = "${@bb.utils.contains('DISTRO_FEATURES', 'systemd', 'systemd', '', d)};${@bb.utils.contains('DISTRO_FEATURES', 'sysvinit', 'sysv', '', d)}"

SYSTEMD_SERVICE:${PN} = "config-center.service"
INITSCRIPT_NAME = "config-center"
INITSCRIPT_PARAMS = "defaults 20 80"

# Members of the group may read and write the configuration.
USERADD_PACKAGES = "${PN}"
GROUPADD_PARAM:${PN} = "--system proreflax"

PACKAGES =+ "${PN}-tools"
FILES:${PN}-tools = "${bindir}/cfc"
# The library's own name has no "lib" in front, as the patterns of other recipes expect.
FILES:${PN} += " \
    ${libdir}/proreflax.so.* \
    ${nonarch_libdir}/sysusers.d \
    ${nonarch_libdir}/tmpfiles.d \
"
FILES:${PN}-dev += "${libdir}/proreflax.so"
