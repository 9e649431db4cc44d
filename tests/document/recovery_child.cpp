// The process the recovery test kills: it opens a design, rotates it and, once the recovery
// file is written, says "written" and waits to be killed, as an editing user would.
// Usage: document_recovery_child DESIGN SETTINGS_FILE
#include <chrono>
#include <cstdio>

#include <QCoreApplication>

#include "document/document.h"

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    if (argc != 3) {
        return 2;
    }
    HMKSettings settings(QString::fromLocal8Bit(argv[2]));
    HMKDocument document(settings);
    document.setRecoveryDelay(std::chrono::milliseconds(50));
    if (!document.readFromURL(argv[1])) {
        return 1;
    }
    QObject::connect(&document, &HMKDocument::recoveryFileWritten, [] {
        std::printf("written\n");
        std::fflush(stdout);
    });
    document.selectAll();
    document.rotateByDegrees(45);
    return QCoreApplication::exec();
}
