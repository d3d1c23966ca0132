################################################################################
#
# proreflax
#
################################################################################

PROREFLAX_VERSION = 0.1.0
PROREFLAX_SITE = $(call qstrip,$(BR2_PACKAGE_PROREFLAX_SOURCES))
PROREFLAX_SITE_METHOD = local
# The owner has not chosen a licence yet.
PROREFLAX_LICENSE = PROPRIETARY
PROREFLAX_REDISTRIBUTE = NO
PROREFLAX_INSTALL_STAGING = YES
PROREFLAX_DEPENDENCIES = rapidjson

# /sbin/writeflash is a fixed path, with and without merged folders.
PROREFLAX_CONF_OPTS = \
	-DPROREFLAX_BUILD_PROGRAMS=ON \
	-DPROREFLAX_STATIC_RUNTIME=ON \
	-DPROREFLAX_INIT=$(PROREFLAX_INIT) \
	-DCMAKE_INSTALL_SBINDIR=/sbin \
	-DCMAKE_SKIP_INSTALL_RPATH=ON

ifeq ($(BR2_INIT_SYSTEMD),y)
PROREFLAX_INIT = systemd
else
PROREFLAX_INIT = sysv
endif

# The script that the sources bring, under a name that tells its turn.
define PROREFLAX_INSTALL_INIT_SYSV
	mv $(TARGET_DIR)/etc/init.d/config-center \
		$(TARGET_DIR)/etc/init.d/S21config-center
endef

# Members of the group may read and write the configuration.
define PROREFLAX_USERS
	- - proreflax -1 * - - - Configuration of the device
endef

define PROREFLAX_PERMISSIONS
	/var/lib/proreflax d 700 0 0 - - - - -
endef

$(eval $(cmake-package))
