// platform/hitoolbox/nib/NibKeys.h
//
// The words of the files: the names of the control classes, and the keys with the members of the records
// that take their values. Keys that need more than one member or an object are left to NibReader.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/hitoolbox/nib/NibRecords.h"

constexpr struct {
    std::string_view name;
    NibClass kind;
} kNibClasses[] = {
    {"IBCarbonRootControl", NibClass::RootControl},
    {"IBCarbonButton", NibClass::Button},
    {"IBCarbonCheckBox", NibClass::CheckBox},
    {"IBCarbonRadioButton", NibClass::RadioButton},
    {"IBCarbonStaticText", NibClass::StaticText},
    {"IBCarbonEditText", NibClass::EditText},
    {"IBCarbonImageView", NibClass::ImageView},
    {"IBCarbonPicture", NibClass::Picture},
    {"IBCarbonIcon", NibClass::Icon},
    {"IBCarbonImageWell", NibClass::ImageWell},
    {"IBCarbonSeparator", NibClass::Separator},
    {"IBCarbonGroupBox", NibClass::GroupBox},
    {"IBCarbonUserPane", NibClass::UserPane},
    {"IBCarbonHIView", NibClass::HIView},
    {"IBCarbonCustom", NibClass::Custom},
    {"IBCarbonPopupButton", NibClass::PopupButton},
    {"IBCarbonRadioGroup", NibClass::RadioGroup},
    {"IBCarbonTab", NibClass::Tab},
    {"IBCarbonSlider", NibClass::Slider},
    {"IBCarbonScrollBar", NibClass::ScrollBar},
    {"IBCarbonLittleArrows", NibClass::LittleArrows},
    {"IBCarbonProgressBar", NibClass::ProgressBar},
    {"IBCarbonChasingArrows", NibClass::ChasingArrows},
    {"IBCarbonTriangle", NibClass::Triangle},
    {"IBCarbonBevelButton", NibClass::BevelButton},
    {"IBCarbonRoundButton", NibClass::RoundButton},
    {"IBCarbonComboBox", NibClass::ComboBox},
    {"IBCarbonScrollView", NibClass::ScrollView},
    {"IBCarbonTextView", NibClass::TextView},
    {"IBCarbonDBListView", NibClass::DataBrowserList},
    {"IBCarbonDBColumnView", NibClass::DataBrowserColumns},
    {"IBCarbonSearchField", NibClass::SearchField},
    {"IBCarbonSegmentedView", NibClass::SegmentedView},
    {"IBCarbonClockDate", NibClass::ClockDate},
    {"IBCarbonPopupArrow", NibClass::PopupArrow},
    {"IBCarbonRelevanceBar", NibClass::RelevanceBar},
};

/// A key and the member that takes its value; the member's type says how the text reads. A std::uint32_t
/// is a four-character code.
template <typename Record>
struct Field {
    std::string_view key;
    std::variant<bool Record::*, std::int32_t Record::*, std::uint32_t Record::*, double Record::*,
                 std::string Record::*, std::optional<bool> Record::*, std::optional<std::int32_t> Record::*>
        member;
};

constexpr Field<NibHelpTag> kHelpTagFields[] = {
    {"helpTagText", &NibHelpTag::text},
    {"helpTagExtendedText", &NibHelpTag::extendedText},
    {"helpTagDisplaySide", &NibHelpTag::displaySide},
};

constexpr Field<NibLayout> kLayoutFields[] = {
    {"bindingTopKind", &NibLayout::top},
    {"bindingLeftKind", &NibLayout::left},
    {"bindingBottomKind", &NibLayout::bottom},
    {"bindingRightKind", &NibLayout::right},
};

constexpr Field<NibMenu> kMenuFields[] = {
    {"title", &NibMenu::title},   {"name", &NibMenu::specialName},
    {"menuID", &NibMenu::menuId}, {"autoDisable", &NibMenu::autoDisable},
    {"hidden", &NibMenu::hidden}, {"excludesMarkColumn", &NibMenu::excludesMarkColumn},
};

constexpr Field<NibMenuItem> kMenuItemFields[] = {
    {"title", &NibMenuItem::title},
    {"command", &NibMenuItem::command},
    {"keyEquivalentModifier", &NibMenuItem::keyModifiers},
    {"separator", &NibMenuItem::separator},
    {"checked", &NibMenuItem::checked},
    {"disabled", &NibMenuItem::disabled},
    {"dynamic", &NibMenuItem::dynamic},
    {"updateSingleItem", &NibMenuItem::updateSingleItem},
    {"notPreviousAlternate", &NibMenuItem::notPreviousAlternate},
    {"hidden", &NibMenuItem::hidden},
};

constexpr Field<NibListColumn> kListColumnFields[] = {
    {"propertyID", &NibListColumn::property},         {"propertyType", &NibListColumn::propertyType},
    {"propertyFlags", &NibListColumn::propertyFlags}, {"titleString", &NibListColumn::title},
    {"minWidth", &NibListColumn::minimumWidth},       {"maxWidth", &NibListColumn::maximumWidth},
    {"sortOrder", &NibListColumn::sortOrder},         {"textAlignment", &NibListColumn::textAlignment},
};

constexpr Field<NibControl> kControlFields[] = {
    {"controlSignature", &NibControl::signature},
    {"controlID", &NibControl::id},
    {"command", &NibControl::command},
    {"title", &NibControl::title},
    {"enabled", &NibControl::enabled},
    {"hidden", &NibControl::hidden},
    {"fontStyle", &NibControl::fontStyle},
    {"justification", &NibControl::justification},
    {"layoutSuspended", &NibControl::layoutSuspended},
    {"initialState", &NibControl::value},
    {"initialValue", &NibControl::value},
    {"selectedItem", &NibControl::value},
    {"tabSelection", &NibControl::value},
    {"minimumValue", &NibControl::minimum},
    {"maximumValue", &NibControl::maximum},
    {"autoToggle", &NibControl::autoToggle},
    {"contentType", &NibControl::contentType},
    {"contentResID", &NibControl::contentResource},
    {"creator", &NibControl::creator},
    {"iconPosition", &NibControl::iconPosition},
    {"iconType", &NibControl::iconType},
    {"iconCreator", &NibControl::iconCreator},
    {"contentTransform", &NibControl::contentTransform},
    {"transform", &NibControl::contentTransform},
    {"dontTrack", &NibControl::dontTrack},
    {"dropTarget", &NibControl::dropTarget},
    {"bevelThickness", &NibControl::bevelThickness},
    {"behavior", &NibControl::behavior},
    {"textPlacement", &NibControl::textPlacement},
    {"textAlignment", &NibControl::textAlignment},
    {"graphicAlignment", &NibControl::graphicAlignment},
    {"rounded", &NibControl::rounded},
    {"isPassword", &NibControl::isPassword},
    {"isUnicode", &NibControl::isUnicode},
    {"isSingleLine", &NibControl::isSingleLine},
    {"useInlineInput", &NibControl::useInlineInput},
    {"readOnly", &NibControl::readOnly},
    {"wrap", &NibControl::wrap},
    {"outputInUnicode", &NibControl::outputInUnicode},
    {"noSelection", &NibControl::noSelection},
    {"opaque", &NibControl::opaque},
    {"scaleToFit", &NibControl::scaleToFit},
    {"alpha", &NibControl::alpha},
    {"primary", &NibControl::primary},
    {"featureBits", &NibControl::featureBits},
    {"classID", &NibControl::classId},
    {"controlDefType", &NibControl::controlDefType},
    {"CDEFResID", &NibControl::definitionResource},
    {"variation", &NibControl::variation},
    {"maximum", &NibControl::maximum},
    {"allowsSubviews", &NibControl::allowsSubviews},
    {"titleJustification", &NibControl::titleJustification},
    {"variableWidth", &NibControl::variableWidth},
    {"variableWith", &NibControl::variableWidth}, // the files' own spelling for pop-up buttons
    {"numRows", &NibControl::rows},
    {"numCols", &NibControl::columns},
    {"intercellHeight", &NibControl::intercellHeight},
    {"direction", &NibControl::direction},
    {"autoLayoutPanes", &NibControl::autoLayoutPanes},
    {"numTickMarks", &NibControl::tickMarks},
    {"orientation", &NibControl::orientation},
    {"isLive", &NibControl::isLive},
    {"viewSize", &NibControl::viewSize},
    {"increment", &NibControl::increment},
    {"indeterminate", &NibControl::indeterminate},
    {"drawTitle", &NibControl::drawTitle},
    {"autoSort", &NibControl::autoSort},
    {"autoCompletion", &NibControl::autoCompletion},
    {"autoDisclosure", &NibControl::autoDisclosure},
    {"autoSizeList", &NibControl::autoSizeList},
    {"scrollHorizontally", &NibControl::scrollHorizontally},
    {"scrollVertically", &NibControl::scrollVertically},
    {"horzScrollBar", &NibControl::scrollHorizontally},
    {"vertScrollBar", &NibControl::scrollVertically},
    {"autoHideScrollBars", &NibControl::autoHideScrollBars},
    {"showFocusRing", &NibControl::showFocusRing},
    {"selectionFlags", &NibControl::selectionFlags},
    {"hiliteStyle", &NibControl::hiliteStyle},
    {"columnWidth", &NibControl::columnWidth},
};

constexpr Field<NibWindow> kWindowFields[] = {
    {"title", &NibWindow::title},
    {"carbonWindowClass", &NibWindow::windowClass},
    {"windowPosition", &NibWindow::position},
    {"themeBrush", &NibWindow::themeBrush},
    {"hasCloseBox", &NibWindow::hasCloseBox},
    {"hasCollapseBox", &NibWindow::hasCollapseBox},
    {"hasHorizontalZoom", &NibWindow::hasHorizontalZoom},
    {"hasVerticalZoom", &NibWindow::hasVerticalZoom},
    {"isResizable", &NibWindow::isResizable},
    {"isConstrained", &NibWindow::isConstrained},
    {"standardHandler", &NibWindow::standardHandler},
    {"receiveUpdates", &NibWindow::receiveUpdates},
    {"receiveActivates", &NibWindow::receiveActivates},
    {"compositing", &NibWindow::compositing},
    {"liveResize", &NibWindow::liveResize},
    {"metal", &NibWindow::metal},
    {"toolbarButton", &NibWindow::toolbarButton},
    {"asyncDrag", &NibWindow::asyncDrag},
    {"hasSideTitle", &NibWindow::hasSideTitle},
    {"doesNotCycle", &NibWindow::doesNotCycle},
    {"inWindowMenu", &NibWindow::inWindowMenu},
    {"hideOnSuspend", &NibWindow::hideOnSuspend},
    {"hideOnFullScreen", &NibWindow::hideOnFullScreen},
    {"hasShadow", &NibWindow::hasShadow},
    {"scalingMode", &NibWindow::scalingMode},
    {"WindowMinWidth", &NibWindow::minimumWidth},
    {"WindowMinHeight", &NibWindow::minimumHeight},
    {"WindowMaxWidth", &NibWindow::maximumWidth},
    {"WindowMaxHeight", &NibWindow::maximumHeight},
};
