// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/ChildProcess.h"
#include "platform/DiskKind.h"
#include "platform/MountTable.h"
#include "platform/VolumeLabel.h"
#include "views/ListedVolume.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

// The lines every fixture starts with: the root disk and what a desktop system
// mounts for itself.
const QByteArray systemLines =
    "21 26 0:20 / /proc rw,nosuid,nodev,noexec,relatime shared:12 - proc proc rw\n"
    "23 26 0:5 / /dev rw,nosuid,relatime shared:8 - devtmpfs udev rw,size=8032k,mode=755\n"
    "25 26 0:23 / /run rw,nosuid,nodev,noexec,relatime shared:5 - tmpfs tmpfs rw,mode=755\n"
    "26 1 8:2 / / rw,relatime shared:1 - ext4 /dev/sda2 rw,errors=remount-ro\n"
    "27 22 0:26 / /sys/fs/cgroup rw,nosuid,nodev,noexec,relatime - cgroup2 cgroup2 rw\n"
    "28 26 8:5 / /boot rw - ext4 /dev/sda5 rw\n"
    "29 28 8:1 / /boot/efi rw - vfat /dev/sda1 rw,fmask=0077\n";

void writeFile(const QString& path, const QByteArray& text) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), text.size());
}

void makeLink(const QByteArray& target, const QByteArray& link) {
    QVERIFY2(symlink(target.constData(), link.constData()) == 0, link.constData());
}

// df's figures for "/" in bytes: its size is f_blocks * f_frsize and its Available
// f_bavail * f_frsize.
std::pair<qint64, qint64> dfRoot() {
    const QByteArray out =
        runForOutput("/usr/bin/df", {"-B1", "--output=size,avail", "/"}).value_or(QByteArray());
    const QByteArrayList fields = out.split('\n').value(1).simplified().split(' ');
    return {fields.value(0).toLongLong(), fields.value(1).toLongLong()};
}

// A sysfs tree as the kernel lays it out, links and attributes alike: a SATA disk, a
// USB disk, a card reader and an encrypted volume on the USB disk.
void makeSysfs(const QByteArray& sys) {
    const QByteArray sata = "/devices/pci0000:00/0000:00:17.0/ata1/host0/target0:0:0/"
                            "0:0:0:0/block/sda";
    const QByteArray usb = "/devices/pci0000:00/0000:00:14.0/usb2/2-1/2-1:1.0/host6/"
                           "target6:0:0/6:0:0:0/block/sdb";
    const QByteArray card = "/devices/platform/card-reader/mmc_host/mmc0/block/mmcblk0";
    const QByteArray mapped = "/devices/virtual/block/dm-0";
    for (const QByteArray& folder :
         {sata + "/sda2", usb + "/sdb1", card, mapped + "/slaves", QByteArray("/dev/block")})
        QVERIFY(QDir().mkpath(QFile::decodeName(sys + folder)));
    const QList<std::pair<QByteArray, QByteArray>> attributes{
        {sata + "/removable", "0\n"}, {sata + "/sda2/partition", "2\n"},
        {usb + "/removable", "0\n"},  {usb + "/sdb1/partition", "1\n"},
        {card + "/removable", "1\n"}, {mapped + "/removable", "0\n"}};
    for (const auto& [file, value] : attributes)
        writeFile(QFile::decodeName(sys + file), value);
    makeLink("../../../../.." + usb + "/sdb1", sys + mapped + "/slaves/sdb1");
    makeLink("../.." + sata + "/sda2", sys + "/dev/block/8:2");
    makeLink("../.." + usb + "/sdb1", sys + "/dev/block/8:17");
    makeLink("../.." + card, sys + "/dev/block/179:0");
    makeLink("../.." + mapped, sys + "/dev/block/254:0");
}

} // namespace

class TestMountTable : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;

    // The fixture's tables; its fstab hides /mnt/hidden.
    MountTableFiles fixture(const QByteArray& mountInfo) {
        writeFile(tmp.filePath("mountinfo"), systemLines + mountInfo);
        writeFile(tmp.filePath("fstab"), "UUID=1234 /mnt/hidden ext4 defaults,x-gvfs-hide 0 2\n"
                                         "UUID=5678 /mnt/shown ext4 defaults 0 2\n");
        return {QFile::encodeName(tmp.filePath("mountinfo")),
                QFile::encodeName(tmp.filePath("fstab"))};
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(tmp.isValid());
        // libmount merges its userspace table into the kernel's; the fixtures bring
        // their own so the machine's does not leak in.
        writeFile(tmp.filePath("utab"), {});
        qputenv("LIBMOUNT_UTAB", QFile::encodeName(tmp.filePath("utab")));
        makeSysfs(QFile::encodeName(tmp.filePath("sys")));
    }

    void rules_data() {
        QTest::addColumn<QByteArray>("mountInfo");
        QTest::addColumn<QByteArrayList>("listed");
        const QByteArrayList rootOnly{"/"};
        QTest::newRow("root and home on one disk")
            << QByteArray("40 26 8:3 / /home rw - ext4 /dev/sda3 rw\n")
            << QByteArrayList{"/", "/home"};
        QTest::newRow("home a subvolume of the root's file system")
            << QByteArray("40 26 8:2 /@home /home rw - btrfs /dev/sda2 rw,subvol=/@home\n")
            << QByteArrayList{"/", "/home"};
        QTest::newRow("usb stick under /run/media")
            << QByteArray(
                   "40 25 8:17 / /run/media/joe/STICK rw,nosuid - vfat /dev/sdb1 rw,uid=1000\n")
            << QByteArrayList{"/", "/run/media/joe/STICK"};
        QTest::newRow("other folders under /run")
            << QByteArray("40 25 8:17 / /run/mediax rw - vfat /dev/sdb1 rw\n"
                          "41 25 8:33 / /run/media rw - vfat /dev/sdc1 rw\n"
                          "42 25 0:50 / /run/user/1000/gvfs rw - fuse.gvfsd-fuse gvfsd-fuse rw\n")
            << rootOnly;
        QTest::newRow("tmpfs") << QByteArray("40 26 0:40 / /tmp rw - tmpfs tmpfs rw,size=4096k\n")
                               << rootOnly;
        QTest::newRow("overlay")
            << QByteArray(
                   "40 26 0:41 / /mnt/merged rw - overlay overlay rw,lowerdir=/a,upperdir=/b\n")
            << rootOnly;
        QTest::newRow("nfs, smb, sshfs and webdav shares")
            << QByteArray("40 26 0:42 / /mnt/nas rw - nfs4 server:/export rw,vers=4.2\n"
                          "41 26 0:43 / /mnt/smb rw - cifs //server/share rw,vers=3.1.1\n"
                          "42 26 0:44 / /home/joe/remote rw - fuse.sshfs joe@host:/ rw\n"
                          "43 26 0:46 / /home/joe/dav rw - fuse.davfs https://dav.example/ rw\n")
            << rootOnly;
        QTest::newRow("fuse file system of the user")
            << QByteArray("40 26 0:45 / /home/joe/Private rw - fuse.encfs encfs rw,user_id=1000\n")
            << QByteArrayList{"/", "/home/joe/Private"};
        QTest::newRow("bind mounts")
            << QByteArray("40 26 8:17 / /media/data rw - ext4 /dev/sdb1 rw\n"
                          "41 26 8:2 /srv /srv2 rw - ext4 /dev/sda2 rw\n"
                          "42 26 8:17 / /media/again rw - ext4 /dev/sdb1 rw\n"
                          "43 26 8:33 /photos /media/photos rw - ext4 /dev/sdc1 rw\n")
            << QByteArrayList{"/", "/media/data"};
        QTest::newRow("x-gvfs-hide in the options or in fstab")
            << QByteArray("40 26 8:17 / /mnt/quiet rw - ext4 /dev/sdb1 rw,x-gvfs-hide\n"
                          "41 26 8:33 / /mnt/hidden rw - ext4 /dev/sdc1 rw\n"
                          "42 26 8:49 / /mnt/shown rw - ext4 /dev/sdd1 rw\n")
            << QByteArrayList{"/", "/mnt/shown"};
        QTest::newRow("snap squashfs")
            << QByteArray("40 26 7:0 / /snap/core22/1033 ro - squashfs /dev/loop0 ro\n"
                          "41 26 7:1 / /mnt/image ro - squashfs /dev/loop1 ro\n"
                          "42 26 7:2 / /var/lib/snapd/hostfs ro - ext4 /dev/loop2 ro\n")
            << rootOnly;
        QTest::newRow("table order kept")
            << QByteArray("40 26 8:49 / /media/zeta rw - ext4 /dev/sdd1 rw\n"
                          "41 26 8:17 / /media/alpha rw - exfat /dev/sdb1 rw\n"
                          "42 26 8:33 / /media/mid rw - fuseblk /dev/sdc1 rw,user_id=0\n")
            << QByteArrayList{"/", "/media/zeta", "/media/alpha", "/media/mid"};
    }
    void rules() {
        QFETCH(QByteArray, mountInfo);
        QFETCH(QByteArrayList, listed);
        QByteArrayList points;
        for (const MountEntry& mount : browsableLocalMounts(fixture(mountInfo)))
            points << mount.mountPoint;
        QCOMPARE(points, listed);
    }

    // A table that cannot be read lists nothing. A volume whose device does not exist has
    // no label to be found and no disk to be told: it is named by its mount point.
    void whatCannotBeRead() {
        const MountTableFiles files{QFile::encodeName(tmp.filePath("missing")), "/etc/fstab"};
        QVERIFY(browsableLocalMounts(files).isEmpty());
        QVERIFY(mountedVolumes(files).isEmpty());
        const QList<VolumeInfo> volumes = mountedVolumes(
            fixture("40 26 8:250 / /mnt/no-such-volume rw - ext4 /dev/sizeloom-none rw\n"));
        QCOMPARE(volumes.size(), 2);
        QCOMPARE(volumes[1].name, QString("no-such-volume"));
        QVERIFY(!volumes[1].totalBytes && !volumes[1].availableBytes && !volumes[1].isInternal);
    }

    void listedVolume_data() {
        QTest::addColumn<std::optional<qint64>>("total");
        QTest::addColumn<std::optional<bool>>("internal");
        QTest::addColumn<bool>("listed");
        QTest::addColumn<bool>("internalShown");
        using Bytes = std::optional<qint64>;
        using Kind = std::optional<bool>;
        QTest::newRow("zero-size volume") << Bytes(0) << Kind(true) << false << true;
        QTest::newRow("no total") << Bytes() << Kind(true) << false << true;
        QTest::newRow("one byte") << Bytes(1) << Kind(true) << true << true;
        QTest::newRow("external") << Bytes(500) << Kind(false) << true << false;
        QTest::newRow("kind unknown") << Bytes(500) << Kind() << true << true;
    }
    void listedVolume() {
        QFETCH(std::optional<qint64>, total);
        QFETCH(std::optional<bool>, internal);
        QFETCH(bool, listed);
        QFETCH(bool, internalShown);
        const std::optional<ListedVolume> row =
            ::listedVolume({"/media/disk", "Disk", total, qint64(0), internal});
        QCOMPARE(row.has_value(), listed);
        if (row)
            QCOMPARE(std::tuple(row->name, row->totalBytes, row->freeBytes, row->internal),
                     std::tuple(QString("Disk"), *total, qint64(0), internalShown));
    }

    // A device whose label blkid cannot read (here one with no file system) is named by
    // its link in udev's by-label folder, with udev's \xNN escapes undone.
    void labelFromUdevLinks() {
        const QByteArray links = QFile::encodeName(tmp.filePath("by-label"));
        QVERIFY(QDir().mkpath(tmp.filePath("by-label")));
        makeLink("/dev/null", links + "/Holiday\\x20Photos\\x2f2024");
        makeLink("/dev/zero", links + "/a\\x5cx20 caf\xc3\xa9");
        QCOMPARE(volumeLabel("/dev/null", links), std::optional<QString>("Holiday Photos/2024"));
        QCOMPARE(volumeLabel("/dev/zero", links), std::optional<QString>("a\\x20 café"));
        QCOMPARE(volumeLabel("/dev/full", links), std::optional<QString>());
        QCOMPARE(volumeLabel("server:/export", links), std::optional<QString>());
    }

    void diskKind_data() {
        QTest::addColumn<int>("majorNumber");
        QTest::addColumn<int>("minorNumber");
        QTest::addColumn<std::optional<bool>>("internal");
        QTest::newRow("partition of a SATA disk") << 8 << 2 << std::optional<bool>(true);
        QTest::newRow("partition of a USB disk") << 8 << 17 << std::optional<bool>(false);
        QTest::newRow("removable card") << 179 << 0 << std::optional<bool>(false);
        QTest::newRow("encrypted volume on a USB disk") << 254 << 0 << std::optional<bool>(false);
        QTest::newRow("no such device (FUSE)") << 0 << 50 << std::optional<bool>();
    }
    void diskKind() {
        QFETCH(int, majorNumber);
        QFETCH(int, minorNumber);
        QFETCH(std::optional<bool>, internal);
        QCOMPARE(isInternalDisk(makedev(majorNumber, minorNumber),
                                QFile::encodeName(tmp.filePath("sys"))),
                 internal);
    }

    void rootMatchesDf() {
        // Other programs write to this disk meanwhile; a reading is compared only when
        // the free space did not move across the df run.
        const auto rootVolume = [] {
            const QList<VolumeInfo> volumes = mountedVolumes();
            const auto root = std::ranges::find(volumes, "/", &VolumeInfo::mountPoint);
            return root == volumes.end() ? std::nullopt : std::optional(*root);
        };
        for (int attempt = 0; attempt < 20; ++attempt) {
            const std::optional<VolumeInfo> before = rootVolume();
            const auto [dfTotal, dfAvailable] = dfRoot();
            const std::optional<VolumeInfo> after = rootVolume();
            QVERIFY2(before && before->totalBytes && before->availableBytes, "/ is not measured");
            QVERIFY2(dfTotal > 0, "df -B1 / gave no figures");
            QCOMPARE(*before->totalBytes, dfTotal);
            if (after && after->availableBytes == before->availableBytes) {
                QCOMPARE(*before->availableBytes, dfAvailable);
                return;
            }
        }
        QFAIL("the free space of / never held still across a df run");
    }
};

QTEST_MAIN(TestMountTable)
#include "tst_mounttable.moc"
