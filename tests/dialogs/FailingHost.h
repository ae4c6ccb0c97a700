// Parts of the simulated host that fail where the simulated ones can't, for the handlers of the
// configuration's windows. Put in their places with world::Swapped.
#pragma once

#include "platform/RuntimeFailure.h"
#include "tests/world/SimHost.h"
#include "tests/world/SwappedHost.h"

#include <string>

namespace brennik::dialogs {

/// Files without a word on drives.
class FilesWithoutDrives : public world::SimFiles {
  public:
    explicit FilesWithoutDrives(world::SimHost& host) : SimFiles(host.ledger, host.clock) {}

    const DriveTable& Drives() const override { throw RuntimeFailure(FailureKind::PathNotFound); }
};

/// Processes whose own folder can be gone.
class ProcessesWithoutFolder : public world::SimProcesses {
  public:
    explicit ProcessesWithoutFolder(world::SimHost& host)
        : SimProcesses(host.timeline, host.ledger, host.files) {
        SetProgramFolder("/config");
    }

    std::string ProgramFolder() override {
        if (bGone)
            throw RuntimeFailure(FailureKind::PathNotFound);
        return SimProcesses::ProgramFolder();
    }

    bool bGone = true;
};

} // namespace brennik::dialogs
