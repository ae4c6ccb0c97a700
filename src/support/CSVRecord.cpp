#include "support/CSVRecord.h"

#include "platform/PumpEvents.h"
#include "support/AsciiText.h"
#include "support/Failure.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace brennik {

namespace {

constexpr char kComma = ',';
constexpr char kQuote = '"';

std::string Quoted(std::string_view strField) {
    std::string strResult;
    strResult.reserve(strField.size() + 2);
    strResult += kQuote;
    for (const char c : strField) {
        if (c == kQuote) {
            strResult += kQuote;
        }
        strResult += c;
    }
    strResult += kQuote;
    return strResult;
}

// Walks through one record, field by field. It holds the record, which may have been an entry of
// the very table that is filled.
class FieldReader {
  public:
    explicit FieldReader(std::string strRecord) : strRecord_(std::move(strRecord)) {}

    bool AtEnd() const { return nPosition_ >= strRecord_.size(); }
    bool EndsInComma() const { return strRecord_.ends_with(kComma); }

    // False when a quoted field is broken.
    bool ReadField(std::string& strField) {
        SkipBlanks();
        // Blanks up to the end are one empty field: the last of them is read as a plain one.
        nPosition_ = std::min(nPosition_, strRecord_.size() - 1);
        if (strRecord_[nPosition_] == kQuote) {
            return ReadQuoted(strField);
        }
        const size_t nEnd = std::min(strRecord_.find(kComma, nPosition_), strRecord_.size());
        strField = Trim(std::string_view(strRecord_).substr(nPosition_, nEnd - nPosition_));
        nPosition_ = nEnd + 1;
        return true;
    }

  private:
    void SkipBlanks() {
        nPosition_ = std::min(strRecord_.find_first_not_of(kBlank, nPosition_), strRecord_.size());
    }

    bool ReadQuoted(std::string& strField) {
        for (++nPosition_; !AtEnd(); ++nPosition_) {
            if (strRecord_[nPosition_] == kQuote) {
                if (!NextIsQuote()) {
                    return CloseQuoted();
                }
                ++nPosition_;
            }
            PumpEvents();
            strField += strRecord_[nPosition_];
        }
        return false;
    }

    bool NextIsQuote() const {
        return nPosition_ + 1 < strRecord_.size() && strRecord_[nPosition_ + 1] == kQuote;
    }

    bool CloseQuoted() {
        ++nPosition_;
        SkipBlanks();
        const bool bClosed = AtEnd() || strRecord_[nPosition_] == kComma;
        ++nPosition_;
        return bClosed;
    }

    std::string strRecord_;
    size_t nPosition_ = 0;
};

} // namespace

int32_t CSVRecord::BuildPacket(std::vector<std::string>& strFields, int16_t iNoOfFields,
                               std::string& strRecord) {
    return GuardedWithText(
        strErrorMessage_, "CSVRecord::BuildPacket() - ", int32_t{1}, [&]() -> int32_t {
            if (static_cast<int64_t>(strFields.size()) < iNoOfFields) {
                strErrorMessage_ = "Invalid number of fields : " + ToDecimal(iNoOfFields);
                return 1;
            }
            strRecord.clear();
            for (int16_t iField = 0; iField < iNoOfFields; ++iField) {
                std::string& strField = strFields[static_cast<size_t>(iField)];
                const bool bQuote = bEncloseFields_ || strField.starts_with(kQuote) ||
                                    strField.find(kComma) != std::string::npos;
                strField = bQuote ? Quoted(strField) : Trim(strField);
                if (iField > 0) {
                    strRecord += kComma;
                }
                strRecord += strField;
            }
            return 0;
        });
}

int32_t CSVRecord::BreakOutFields(std::vector<std::string>& strFields, int16_t& iNoOfFields,
                                  const std::string& strRecord) {
    // The prefix isn't the name of this operation: it is meant so.
    return GuardedWithText(strErrorMessage_, "CSVRecord::BreakOutPacket() - ", int32_t{1},
                           [&]() -> int32_t {
                               if (strRecord.empty()) {
                                   strErrorMessage_ = "Cannot extract fields from a blank record";
                                   return 1;
                               }
                               FieldReader reader(strRecord);
                               strFields.assign(1, {});
                               iNoOfFields = 0;
                               const auto store = [&](std::string strField) {
                                   iNoOfFields = Narrow<int16_t>(iNoOfFields + 1);
                                   strFields.back() = std::move(strField);
                                   strFields.emplace_back();
                               };
                               while (!reader.AtEnd()) {
                                   std::string strField;
                                   if (!reader.ReadField(strField)) {
                                       return 1;
                                   }
                                   store(std::move(strField));
                               }
                               if (reader.EndsInComma()) {
                                   store({});
                               }
                               return 0;
                           });
}

} // namespace brennik
