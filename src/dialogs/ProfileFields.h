// Which plain field of the configuration window edits which property of a profile: one table each
// for texts, numbers and check boxes. What takes more than a copy isn't here.
// Plain tables; tests use them as they are.
#pragma once

#include "config/TBrennikClientConfig.h"

#include <cstdint>
#include <span>
#include <string>

class QCheckBox;

namespace brennik {

class TextField;
struct ConfigControls;

struct TextSetting {
    TextField* (*field)(const ConfigControls&);
    const std::string& (TBrennikClientConfig::*get)() const;
    void (TBrennikClientConfig::*set)(std::string);
};

struct NumberSetting {
    TextField* (*field)(const ConfigControls&);
    int32_t (TBrennikClientConfig::*get)() const;
    void (TBrennikClientConfig::*set)(int32_t);
};

struct CheckSetting {
    QCheckBox* ConfigControls::*box;
    bool (TBrennikClientConfig::*get)() const;
    void (TBrennikClientConfig::*set)(bool);
};

std::span<const TextSetting> TextSettings();
std::span<const NumberSetting> NumberSettings();
std::span<const CheckSetting> CheckSettings();

} // namespace brennik
