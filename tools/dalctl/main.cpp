#include "commands.h"

#include <QCoreApplication>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    return runCommandLine(QCoreApplication::arguments());
}
