// Builds and splits comma-separated records: the requests of devices, the lists of settings.
// Plain text work without a far side, but for the events that it pumps inside quoted fields;
// tests watch those through the simulated host.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace brennik {

class CSVRecord {
  public:
    /// With True every field is put in double quotes; False at first.
    bool bEncloseFields() const { return bEncloseFields_; }
    void bEncloseFields(bool bValue) { bEncloseFields_ = bValue; }

    /// The text of the last failure. A success leaves it as it is.
    const std::string& strErrorMessage() const { return strErrorMessage_; }

    /// Joins the first iNoOfFields entries with commas into strRecord. An entry is quoted, its own
    /// double quotes doubled, if bEncloseFields is set, if it holds a comma, or if it begins with
    /// a double quote; every other one is trimmed. The entries are changed in place to what stands
    /// in the record. 0, or 1 with strErrorMessage when the table is too short; strRecord then
    /// stays as it was.
    [[nodiscard]] int32_t BuildPacket(std::vector<std::string>& strFields, int16_t iNoOfFields,
                                      std::string& strRecord);

    /// Splits a record. The table then holds the fields from index 0 and one empty entry behind
    /// them; iNoOfFields doesn't count that one. Plain fields are trimmed, quoted ones are not.
    /// 0, or 1 on failure: an empty record (table and count stay as they were), quotes that don't
    /// close or have more than blanks behind them (without a text; the fields so far stay), and
    /// more fields than 16 bits count. Pumps events for each character inside quotes.
    [[nodiscard]] int32_t BreakOutFields(std::vector<std::string>& strFields, int16_t& iNoOfFields,
                                         const std::string& strRecord);

  private:
    bool bEncloseFields_ = false;
    std::string strErrorMessage_;
};

} // namespace brennik
