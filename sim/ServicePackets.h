// The frames of one session, one after another: walks what a tree serves and builds each frame
// when it is asked for. It knows no wire, no answers and no time; ServiceBehaviour drives it.
#pragma once

#include "sim/ServedTree.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace brennik::sim {

class ServicePackets {
  public:
    enum class Result { Frame, NoMore, ReadFailed };

    /// nBlock is the most data in one write data packet, 1 to kLargestBlock.
    ServicePackets(std::shared_ptr<const ServedTree> tree, size_t nBlock);

    /// Builds the next frame in strFrame, whose storage is reused. After NoMore or ReadFailed
    /// there is nothing more to ask for.
    Result Next(std::string& strFrame);

    int64_t lFilesClosed() const { return lFilesClosed_; } ///< real files only
    int64_t lDataBytes() const { return lDataBytes_; }     ///< data of the frames built so far

  private:
    Result NextOfFile(const ServedFile& file, std::string& strFrame);
    bool ReadBlock(const ServedFile& file, char* buffer, size_t nCount);
    void NextOfMarker(const std::string& strName, std::string& strFrame);

    std::shared_ptr<const ServedTree> tree_;
    std::vector<ServedItem> items_;
    size_t nBlock_;
    size_t nItem_ = 0;
    bool bOpened_ = false; ///< the open packet of the current item is built
    int64_t lOffset_ = 0;
    ReadAt readAt_;
    std::string strWindow_; ///< read ahead, from lWindowStart_ on
    int64_t lWindowStart_ = 0;
    int64_t lFilesClosed_ = 0;
    int64_t lDataBytes_ = 0;
};

} // namespace brennik::sim
