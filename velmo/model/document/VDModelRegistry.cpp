#include "velmo/model/core/VDModelRegistry.h"

#include "velmo/model/document/VDModelApp.h"
#include "velmo/model/document/VDModelAppLinks.h"
#include "velmo/model/document/VDModelScreen.h"
#include "velmo/model/document/VDModelTabBarScreen.h"
#include "velmo/model/interaction/VDModelAction.h"
#include "velmo/model/interaction/VDModelActionCallAction.h"
#include "velmo/model/interaction/VDModelActionDismissScreen.h"
#include "velmo/model/interaction/VDModelActionPresentScreen.h"
#include "velmo/model/interaction/VDModelActionReference.h"
#include "velmo/model/interaction/VDModelActionScriptAnimation.h"
#include "velmo/model/interaction/VDModelActionSelectTab.h"
#include "velmo/model/interaction/VDModelAnimation.h"
#include "velmo/model/interaction/VDModelAnimationTimeline.h"
#include "velmo/model/interaction/VDModelEventListener.h"
#include "velmo/model/interaction/VDModelSubmitAction.h"
#include "velmo/model/interaction/VDModelViewState.h"
#include "velmo/model/records/VDModelAnimationWeb.h"
#include "velmo/model/records/VDModelAutoAnimate.h"
#include "velmo/model/records/VDModelBar.h"
#include "velmo/model/records/VDModelBorder.h"
#include "velmo/model/records/VDModelColor.h"
#include "velmo/model/records/VDModelConstraint.h"
#include "velmo/model/records/VDModelDataList.h"
#include "velmo/model/records/VDModelFill.h"
#include "velmo/model/records/VDModelFont.h"
#include "velmo/model/records/VDModelFrame.h"
#include "velmo/model/records/VDModelGradient.h"
#include "velmo/model/records/VDModelGradientStop.h"
#include "velmo/model/records/VDModelGuide.h"
#include "velmo/model/records/VDModelHover.h"
#include "velmo/model/records/VDModelPoint.h"
#include "velmo/model/records/VDModelShadow.h"
#include "velmo/model/records/VDModelSpan.h"
#include "velmo/model/records/VDModelSpecsInfo.h"
#include "velmo/model/records/VDModelTheme.h"
#include "velmo/model/records/VPAnimationExportSettings.h"
#include "velmo/model/view/VDModelBlurView.h"
#include "velmo/model/view/VDModelCellView.h"
#include "velmo/model/view/VDModelCollectionView.h"
#include "velmo/model/view/VDModelComponentInstanceData.h"
#include "velmo/model/view/VDModelComponentMasterData.h"
#include "velmo/model/view/VDModelComponentOverride.h"
#include "velmo/model/view/VDModelGradientView.h"
#include "velmo/model/view/VDModelImageView.h"
#include "velmo/model/view/VDModelLabel.h"
#include "velmo/model/view/VDModelMapView.h"
#include "velmo/model/view/VDModelProgressView.h"
#include "velmo/model/view/VDModelProp.h"
#include "velmo/model/view/VDModelSliceView.h"
#include "velmo/model/view/VDModelSliderView.h"
#include "velmo/model/view/VDModelStackView.h"
#include "velmo/model/view/VDModelSwitchView.h"
#include "velmo/model/view/VDModelTabBar.h"
#include "velmo/model/view/VDModelTabBarItem.h"
#include "velmo/model/view/VDModelTableView.h"
#include "velmo/model/view/VDModelTextView.h"
#include "velmo/model/view/VDModelVideoView.h"
#include "velmo/model/view/VDModelView.h"
#include "velmo/model/view/VDModelViewConstraints.h"
#include "velmo/model/view/VDModelViewPadding.h"
#include "velmo/model/view/VDModelWebView.h"
#include "velmo/model/view/VDModelWidget.h"

namespace velmo {

std::vector<const VDClass*> registerModelClasses() {
    return {
        // The decoder's fast table, in its order, as far as the classes exist.
        &VDModelViewConstraints::classObject(),
        &VDModelConstraint::classObject(),
        &VDModelHover::classObject(),
        &VDModelApp::classObject(),
        &VDModelWidget::classObject(),
        &VDModelScreen::classObject(),
        &VDModelLabel::classObject(),
        &VDModelView::classObject(),
        &VDModelImageView::classObject(),
        &VDModelTableView::classObject(),
        &VDModelCellView::classObject(),
        &VDModelTextView::classObject(),
        &VDModelMapView::classObject(),
        &VDModelWebView::classObject(),
        &VDModelSliderView::classObject(),
        &VDModelSwitchView::classObject(),
        &VDModelGradientView::classObject(),
        &VDModelProgressView::classObject(),
        &VDModelCollectionView::classObject(),
        &VDModelVideoView::classObject(),
        &VDModelBlurView::classObject(),
        &VDModelTabBarScreen::classObject(),
        &VDModelTabBar::classObject(),
        &VDModelTabBarItem::classObject(),
        &VDModelStackView::classObject(),
        &VDModelSubmitAction::classObject(),
        &VDModelViewPadding::classObject(),
        &VDModelFrame::classObject(),
        &VDModelBorder::classObject(),
        &VDModelShadow::classObject(),
        &VDModelSpecsInfo::classObject(),
        // Every other model class.
        &VDModel::classObject(),
        &VDModelAnimation::classObject(),
        &VDModelAnimationTimeline::classObject(),
        &VDModelAnimationWeb::classObject(),
        &VDModelAutoAnimate::classObject(),
        &VDModelBar::classObject(),
        &VDModelColor::classObject(),
        &VDModelDataList::classObject(),
        &VDModelFill::classObject(),
        &VDModelGradient::classObject(),
        &VDModelGradientStop::classObject(),
        &VDModelGuide::classObject(),
        &VDModelPoint::classObject(),
        &VDModelTheme::classObject(),
        &VDModelFont::classObject(),
        &VDModelSpan::classObject(),
        &VPAnimationExportSettings::classObject(),
        &VDModelViewState::classObject(),
        &VDModelAppLinks::classObject(),
        &VDModelComponentInstanceData::classObject(),
        &VDModelComponentMasterData::classObject(),
        &VDModelComponentOverride::classObject(),
        &VDModelProp::classObject(),
        &VDModelSliceView::classObject(),
        &VDModelAction::classObject(),
        &VDModelActionPresentScreen::classObject(),
        &VDModelActionDismissScreen::classObject(),
        &VDModelActionSelectTab::classObject(),
        &VDModelActionCallAction::classObject(),
        &VDModelActionReference::classObject(),
        &VDModelActionScriptAnimation::classObject(),
        &VDModelEventListener::classObject(),
    };
}

} // namespace velmo
