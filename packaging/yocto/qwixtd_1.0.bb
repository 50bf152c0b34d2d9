# The daemon and the library of device service proxies, for an image of Yocto 4.2 or newer with the layer meta-qt6.
SUMMARY = "Keeps the device's widgets registered as remote applications"
SECTION = "net"
# Its owner has not chosen a licence yet.
LICENSE = "CLOSED"

# Where the sources are, and which: to be filled in. They are unpacked where every release looks for them unless S says
# otherwise; old releases unpack them elsewhere by themselves, and new ones refuse an S that leads there.
SRC_URI = "git://git.example/qwixtd.git;protocol=https;branch=main;destsuffix=${BP}"
SRCREV = "0000000000000000000000000000000000000000"

inherit qt6-cmake systemd useradd

DEPENDS = "qtbase qtbase-native curl dbus"
RDEPENDS:${PN} = "ca-certificates dbus"

# The developer server of the device's maker, as host or host:port.
QWIXTD_SERVER_HOST ?= "developer.vorlet.example"

# An image whose device has a logging library adds its recipe to DEPENDS and -DQWIXTD_REQUIRE_PLATFORM_LOG=ON here.
EXTRA_OECMAKE = "\
    -DQWIXTD_QT_MAJOR=6 \
    -DQWIXTD_HARDENED=ON \
    -DQWIXTD_BUILD_SIMULATOR=OFF \
    -DBUILD_TESTING=OFF \
    -DQWIXTD_SERVER_HOST=${QWIXTD_SERVER_HOST} \
"

# The project installs its unit below the prefix; an image may have its units elsewhere.
do_install:append() {
    if [ "${systemd_system_unitdir}" != "${prefix}/lib/systemd/system" ]; then
        install -d ${D}${systemd_system_unitdir}
        mv ${D}${prefix}/lib/systemd/system/qwixtd.service ${D}${systemd_system_unitdir}
        rmdir -p --ignore-fail-on-non-empty ${D}${prefix}/lib/systemd/system
    fi
}

SYSTEMD_SERVICE:${PN} = "qwixtd.service"

# The user that the unit and the bus policy name.
USERADD_PACKAGES = "${PN}"
USERADD_PARAM:${PN} = "--system --user-group --no-create-home --home-dir /nonexistent --shell /sbin/nologin qwixtd"

FILES:${PN} += "${datadir}/dbus-1"
