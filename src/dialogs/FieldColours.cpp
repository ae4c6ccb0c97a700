#include "dialogs/FieldColours.h"

#include <QPalette>
#include <QWidget>

namespace brennik {

void FieldColours::Enabled(bool bEnabled) {
    control_.setEnabled(bEnabled);
}

// A window's background is what a field has anyway. Text on a button's face has its colour from
// there; otherwise it might not be read.
void FieldColours::BackColor(uint32_t lColor) {
    QPalette colours;
    if (lColor == kButtonFace) {
        for (const QPalette::ColorGroup group :
             {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            colours.setColor(group, QPalette::Base, colours.color(group, QPalette::Button));
            colours.setColor(group, QPalette::Text, colours.color(group, QPalette::ButtonText));
        }
    }
    control_.setPalette(colours);
}

} // namespace brennik
