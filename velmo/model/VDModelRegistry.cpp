#include "velmo/model/VDModelRegistry.h"

#include "velmo/model/VDModelBar.h"
#include "velmo/model/VDModelBorder.h"
#include "velmo/model/VDModelColor.h"
#include "velmo/model/VDModelConstraint.h"
#include "velmo/model/VDModelDataList.h"
#include "velmo/model/VDModelFill.h"
#include "velmo/model/VDModelFrame.h"
#include "velmo/model/VDModelGradient.h"
#include "velmo/model/VDModelGradientStop.h"
#include "velmo/model/VDModelGuide.h"
#include "velmo/model/VDModelHover.h"
#include "velmo/model/VDModelPoint.h"
#include "velmo/model/VDModelShadow.h"
#include "velmo/model/VDModelSpecsInfo.h"
#include "velmo/model/VDModelTheme.h"
#include "velmo/model/VDModelView.h"
#include "velmo/model/VDModelViewConstraints.h"
#include "velmo/model/VDModelViewPadding.h"
#include "velmo/model/VPAnimationExportSettings.h"

namespace velmo {

std::vector<const VDClass*> registerModelClasses() {
    return {
        // The decoder's fast table, in its order, as far as the classes exist.
        &VDModelViewConstraints::classObject(),
        &VDModelConstraint::classObject(),
        &VDModelHover::classObject(),
        &VDModelView::classObject(),
        &VDModelViewPadding::classObject(),
        &VDModelFrame::classObject(),
        &VDModelBorder::classObject(),
        &VDModelShadow::classObject(),
        &VDModelSpecsInfo::classObject(),
        // Every other model class.
        &VDModel::classObject(),
        &VDModelBar::classObject(),
        &VDModelColor::classObject(),
        &VDModelDataList::classObject(),
        &VDModelFill::classObject(),
        &VDModelGradient::classObject(),
        &VDModelGradientStop::classObject(),
        &VDModelGuide::classObject(),
        &VDModelPoint::classObject(),
        &VDModelTheme::classObject(),
        &VPAnimationExportSettings::classObject(),
    };
}

} // namespace velmo
