#include "platform/Host.h"
#include "platform/HostFile.h"
#include "platform/LinuxClock.h"
#include "platform/LinuxComPorts.h"
#include "platform/LinuxFiles.h"
#include "platform/LinuxProcesses.h"
#include "platform/LinuxProfileStrings.h"
#include "platform/LinuxSockets.h"
#include "platform/OpenSslRtl.h"
#include "platform/ProgramFolder.h"

namespace brennik {

namespace {

struct LinuxHost {
    ProgramFolderChoice programFolder = CurrentProgramFolder();
    HostFile hostFile = HostFile::InFolder(programFolder.strFolder);
    LinuxClock clock;
    LinuxSockets sockets;
    LinuxComPorts comPorts{hostFile};
    LinuxFiles files{hostFile.Drives(), programFolder.strFolder};
    LinuxProfileStrings profileStrings{hostFile.Drives()};
    LinuxProcesses processes{hostFile.Drives(), programFolder};
    OpenSslRtl ostRtl;
    Host host{clock, sockets, comPorts, files, profileStrings, processes, ostRtl};
};

bool bMade = false;

} // namespace

Host& RealHost() {
    static LinuxHost host;
    bMade = true;
    return host.host;
}

bool RealHostMade() {
    return bMade;
}

} // namespace brennik
