// The volume monitor, the export dialog's model and `hemlark export` against a fake UDisks2
// service (fake_udisks2.py, a python3-dbusmock template). ctest runs this program under
// dbus-run-session, so the fake lives on a private session bus that nothing else sees; each
// test starts its own fake and mounts its sticks on folders of its own.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <QTemporaryDir>

#include "document/machine_export.h"
#include "document/machine_export_model.h"
#include "platform/udisks_volume_monitor.h"

// Readable failure messages.
inline void PrintTo(const QString& text, std::ostream* stream) {
    *stream << '"' << text.toStdString() << '"';
}

namespace {

const QString kFakeService = QStringLiteral("org.freedesktop.UDisks2");
const QString kFakeControl = QStringLiteral("org.hemlark.FakeUDisks2");
const QString kManagerPath = QStringLiteral("/org/freedesktop/UDisks2");

class CoreApplication : public ::testing::Environment {
public:
    void SetUp() override { application_ = std::make_unique<QCoreApplication>(argc_, argv_); }
    void TearDown() override { application_.reset(); }

private:
    int argc_ = 1;
    char name_[16] = "volume_tests";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QCoreApplication> application_;
};

[[maybe_unused]] const auto* const environment =
    ::testing::AddGlobalTestEnvironment(new CoreApplication);

bool waitFor(const std::function<bool()>& done,
             std::chrono::milliseconds timeout = std::chrono::seconds(10)) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!done() && std::chrono::steady_clock::now() < end) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return done();
}

// The system's own Python, which has python3-dbusmock (a Python of the user's may not).
QString dbusmockPython() {
    for (const QString& python : {QStringLiteral("/usr/bin/python3"), QStringLiteral("python3")}) {
        if (QProcess::execute(python, {"-c", "import dbusmock"}) == 0) {
            return python;
        }
    }
    return {};
}

struct Stick {
    const char* name;
    const char* idType;
    const char* idVersion;
    bool readOnly = false;
    bool removable = true;
    QVariantMap drive = {};
    bool mounted = true;
};

class FakeUDisksTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("HEMLARK_PRIVATE_BUS")) {
            GTEST_SKIP() << "needs a private bus: run through ctest (dbus-run-session)";
        }
        python_ = dbusmockPython();
        if (python_.isEmpty()) {
            GTEST_SKIP() << "python3-dbusmock is not installed (scripts/install-deps)";
        }
        ASSERT_TRUE(mounts_.isValid());
    }
    void TearDown() override {
        if (service_.state() != QProcess::NotRunning) {
            service_.kill();
            service_.waitForFinished();
        }
    }

    void startService() {
        service_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        service_.setStandardOutputFile(QProcess::nullDevice());
        service_.start(python_, {"-m", "dbusmock", "-t", FAKE_UDISKS2_TEMPLATE});
        ASSERT_TRUE(waitFor([] {
            return QDBusConnection::sessionBus().interface()->isServiceRegistered(kFakeService);
        }));
    }

    QDBusMessage control(const QString& method, const QVariantList& arguments) {
        QDBusMessage call =
            QDBusMessage::createMethodCall(kFakeService, kManagerPath, kFakeControl, method);
        call.setArguments(arguments);
        const QDBusMessage reply = QDBusConnection::sessionBus().call(call);
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
        return reply;
    }

    QString mountPoint(const QString& name) {
        const QString path = mounts_.filePath(name);
        std::filesystem::create_directories(path.toStdString());
        return path;
    }

    void addStick(const Stick& stick) {
        control("AddStick",
                {stick.name, stick.mounted ? mountPoint(stick.name) : QString(), stick.idType,
                 stick.idVersion, stick.readOnly, stick.removable, stick.drive});
    }

    // (method, object path) of every Unmount, Eject and PowerOff so far.
    QList<std::pair<QString, QString>> calls() {
        QList<std::pair<QString, QString>> list;
        const QDBusArgument argument =
            control("Calls", {}).arguments().value(0).value<QDBusArgument>();
        argument.beginArray();
        while (!argument.atEnd()) {
            QString method;
            QString path;
            argument.beginStructure();
            argument >> method >> path;
            argument.endStructure();
            list.append({method, path});
        }
        argument.endArray();
        return list;
    }

    std::unique_ptr<HMKUDisksVolumeMonitor> openMonitor() {
        auto monitor = std::make_unique<HMKUDisksVolumeMonitor>(QDBusConnection::sessionBus());
        EXPECT_TRUE(waitUntilLoaded(*monitor));
        return monitor;
    }

    QString python_;
    QProcess service_;
    QTemporaryDir mounts_;
    QTemporaryDir home_;
};

QString block(const char* name) {
    return kManagerPath + "/block_devices/" + name;
}

QString drive(const char* name) {
    return kManagerPath + "/drives/" + name;
}

}  // namespace

TEST_F(FakeUDisksTest, ListsMountedRemovableVolumesAndOffersOnlyWritableFat) {
    startService();
    struct Case {
        Stick stick;
        const char* listedAs;  // nullptr: not a mounted removable volume
        bool offered;
    };
    const Case cases[] = {
        {{"a_fat32", "vfat", "FAT32"}, "MS-DOS (FAT32)", true},
        {{"b_fat12", "vfat", "FAT12"}, "MS-DOS (FAT12)", true},
        {{"c_card", "vfat", "FAT16", false, false, {{"MediaRemovable", true}}},
         "MS-DOS (FAT16)",
         true},
        {{"d_readonly", "vfat", "FAT16", true}, "MS-DOS (FAT16)", false},
        {{"e_oddfat", "vfat", "FAT28"}, "MS-DOS", false},
        {{"f_exfat", "exfat", "1.0"}, "exfat", false},
        {{"g_fixed", "vfat", "FAT32", false, false}, nullptr, false},
        {{"h_unmounted", "vfat", "FAT32", false, true, {}, false}, nullptr, false},
    };
    for (const Case& test : cases) {
        addStick(test.stick);
    }
    auto monitor = openMonitor();
    HMKSettings settings(home_.filePath("hemlark.conf"));
    settings.setValue(HMKSettings::machineTag, 1);
    HMKMachineExportModel model(*monitor, settings);

    QStringList listed;
    QStringList offered;
    for (const Case& test : cases) {
        if (test.listedAs != nullptr) {
            listed.append(mountPoint(test.stick.name) + " " + test.listedAs);
        }
        if (test.offered) {
            offered.append(mountPoint(test.stick.name));
        }
    }
    QStringList actual;
    for (const HMKRemovableVolume& volume : monitor->volumes()) {
        actual.append(volume.mountPath + " " + volume.fileSystem);
        EXPECT_EQ(volume.writable, !volume.name.startsWith("D_")) << volume.name.toStdString();
        EXPECT_GT(volume.totalBytes, 0);
    }
    EXPECT_EQ(actual, listed);
    QStringList actualOffered;
    for (const HMKRemovableVolume& volume : model.volumes()) {
        actualOffered.append(volume.mountPath);
    }
    EXPECT_EQ(actualOffered, offered);
    EXPECT_TRUE(model.index(0, HMKMachineExportModel::textColumn)
                    .data()
                    .toString()
                    .startsWith("A_FAT32\nMS-DOS (FAT32), "));
}

TEST_F(FakeUDisksTest, TheTableFollowsPluggingRemountingAndUnplugging) {
    startService();
    auto monitor = openMonitor();
    HMKSettings settings(home_.filePath("hemlark.conf"));
    HMKMachineExportModel model(*monitor, settings);
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_FALSE(model.emptyTableText().isEmpty());

    addStick({"stick", "vfat", "FAT32"});
    ASSERT_TRUE(waitFor([&] { return model.rowCount() == 1; }));
    EXPECT_EQ(model.volumes()[0].mountPath, mountPoint("stick"));

    control("SetMountPoints", {"stick", QStringList{mountPoint("elsewhere")}});
    ASSERT_TRUE(waitFor([&] {
        return model.rowCount() == 1 && model.volumes()[0].mountPath == mountPoint("elsewhere");
    }));
    control("SetMountPoints", {"stick", QStringList{}});
    ASSERT_TRUE(waitFor([&] { return model.rowCount() == 0; }));
    control("SetMountPoints", {"stick", QStringList{mountPoint("stick")}});
    ASSERT_TRUE(waitFor([&] { return model.rowCount() == 1; }));

    control("RemoveStick", {"stick"});
    ASSERT_TRUE(waitFor([&] { return model.rowCount() == 0; }));
    EXPECT_TRUE(monitor->volumes().isEmpty());
}

TEST_F(FakeUDisksTest, EjectUnmountsThenEjectsOrPowersTheDriveOff) {
    startService();
    struct Case {
        Stick stick;
        QStringList methods;
    };
    const Case cases[] = {
        {{"card", "vfat", "FAT32"}, {"Unmount", "Eject"}},
        {{"stick", "vfat", "FAT32", false, true, {{"Ejectable", false}}}, {"Unmount", "PowerOff"}},
        {{"disk", "vfat", "FAT32", false, true, {{"Ejectable", false}, {"CanPowerOff", false}}},
         {"Unmount"}},
    };
    for (const Case& test : cases) {
        addStick(test.stick);
    }
    auto monitor = openMonitor();
    for (const Case& test : cases) {
        const int before = static_cast<int>(calls().size());
        const QList<HMKRemovableVolume> volumes = monitor->volumes();
        const auto volume = std::find_if(volumes.begin(), volumes.end(), [&](const auto& v) {
            return v.mountPath == mountPoint(test.stick.name);
        });
        ASSERT_NE(volume, volumes.end());
        QString failure;
        EXPECT_TRUE(ejectAndWait(*monitor, *volume, &failure)) << failure.toStdString();
        QList<std::pair<QString, QString>> expected;
        for (const QString& method : test.methods) {
            expected.append(
                {method, method == "Unmount" ? block(test.stick.name) : drive(test.stick.name)});
        }
        EXPECT_EQ(calls().mid(before), expected) << test.stick.name;
    }
    // Unmounting takes the volumes off the list.
    EXPECT_TRUE(waitFor([&] { return monitor->volumes().isEmpty(); }));
}

TEST_F(FakeUDisksTest, AFailedEjectIsReportedAsAWarningAndTheFileStays) {
    startService();
    for (const char* failing : {"Unmount", "Eject"}) {
        addStick({"stick", "vfat", "FAT32"});
        auto monitor = openMonitor();
        ASSERT_EQ(monitor->volumes().size(), 1);
        control("FailNext", {failing});

        HMKMachineExportRequest request;
        request.volume = monitor->volumes().front();
        request.volumeRoot = request.volume->mountPath.toStdString();
        request.volumeName = request.volume->name;
        request.file = request.volumeRoot / "rose.jef";
        request.ejectVolume = true;
        HMKMachineExport exporter(monitor.get());
        const HMKMachineExportResult result =
            exporter.run(request, [](const std::filesystem::path& file, HMKError*) {
                return QFile(QString::fromStdString(file.string())).open(QIODevice::WriteOnly);
            });
        EXPECT_EQ(result.outcome, HMKMachineExportOutcome::exportedNotEjected) << failing;
        EXPECT_EQ(result.alert.style, HMKAlertStyle::warning);
        EXPECT_EQ(result.alert.title, "Design exported, drive not ejected");
        EXPECT_TRUE(result.alert.text.startsWith("Export successful, not ejected"));
        EXPECT_TRUE(result.ejectFailure.contains("busy")) << result.ejectFailure.toStdString();
        EXPECT_TRUE(std::filesystem::exists(request.file));
        control("RemoveStick", {"stick"});
    }
}

TEST_F(FakeUDisksTest, AMissingServiceListsNoVolumesAndSaysWhyUntilItStarts) {
    auto monitor = openMonitor();
    HMKSettings settings(home_.filePath("hemlark.conf"));
    HMKMachineExportModel model(*monitor, settings);
    EXPECT_TRUE(monitor->volumes().isEmpty());
    EXPECT_TRUE(monitor->unavailableReason().contains("UDisks2"));
    EXPECT_EQ(model.emptyTableText(), monitor->unavailableReason());

    startService();
    addStick({"stick", "vfat", "FAT16"});
    ASSERT_TRUE(waitFor([&] { return model.rowCount() == 1; }));
    EXPECT_TRUE(monitor->unavailableReason().isEmpty());
}

TEST_F(FakeUDisksTest, TheToolListsExportsOntoAndEjectsTheStick) {
    startService();
    addStick({"stick", "vfat", "FAT32"});
    addStick({"camera", "exfat", "1.0"});
    const QString stick = mountPoint("stick");
    std::filesystem::create_directories(stick.toStdString() + "/.fseventsd");
    // The tool talks to the system bus, which is the fake's bus here.
    const std::string environment = "DBUS_SYSTEM_BUS_ADDRESS='" +
                                    qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS").toStdString() +
                                    "' ";
    const std::string output = home_.filePath("out").toStdString();
    const auto tool = [&](const std::string& arguments) {
        return std::system(
            (environment + HEMLARK_TOOL + " " + arguments + " >" + output + " 2>&1").c_str());
    };
    ASSERT_EQ(tool("volumes --machine 1"), 0);
    QFile listing(QString::fromStdString(output));
    ASSERT_TRUE(listing.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(listing.readAll());
    EXPECT_TRUE(text.contains(stick + "\tSTICK: MS-DOS (FAT32), ")) << text.toStdString();
    EXPECT_TRUE(text.contains("not listed: " + mountPoint("camera"))) << text.toStdString();

    ASSERT_EQ(tool(std::string("export ") + HEMLARK_SAMPLES_DIR + "/heart.jef --machine 1 " +
                   "--volume " + stick.toStdString() + " --name rose --eject"),
              0);
    EXPECT_TRUE(std::filesystem::exists(stick.toStdString() + "/EMB/EmbF/rose.jef"));
    EXPECT_FALSE(std::filesystem::exists(stick.toStdString() + "/.fseventsd"));
    EXPECT_EQ(calls().size(), 2);
}
