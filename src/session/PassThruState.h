// The states of a pass-through run, by the numbers that the log names stand for.
// Plain values; PassThruStateName in passthru/ gives their names.
#pragma once

#include <cstdint>

namespace brennik {

enum PassThruState : int32_t {
    PASSTHRU_ST_COMLETE = 0,            ///< the run is over
    PASSTHRU_ST_ERROR = 1,              ///< named only; nothing enters it
    PASSTHRU_ST_PARTIALDOWNLOAD = 2,    ///< the cycle serves a partial download request
    PASSTHRU_ST_UPLOADFILES = 3,        ///< the cycle serves an upload
    PASSTHRU_ST_FULLDOWNLOAD = 4,       ///< the cycle serves a full download
    PASSTHRU_ST_TMSENQUIRY = 5,         ///< the cycle serves a TMS enquiry
    PASSTHRU_ST_START = 6,              ///< at first, and anew after a reboot
    PASSTHRU_ST_USERABORTED = 7,        ///< by the user, or by a TMS enquiry that was refused
    PASSTHRU_ST_FULLTMSAPP = 8,         ///< a full download of one TMS application, more to come
    PASSTHRU_ST_DOWNLOAAPPCOMPLETE = 9, ///< a download from the local list has ended
    PASSTHRU_ST_LASTFULLTMSAPP = 10,    ///< as 8, the last application
};

} // namespace brennik
