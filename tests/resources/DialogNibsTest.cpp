// tests/resources/DialogNibsTest.cpp
//
// The two descriptions of the information dialog differ in the knob option alone: whoever changes
// one has to change the other.
#include <gmock/gmock.h>

#include <sstream>

#include "tests/support/Support.h"

namespace {

// The dialog's controls as `quillets nib` lists them, in their order, without their places.
std::vector<std::string> ControlsOf(const std::string& nib)
{
    const ProgramResult result =
        RunProgram({BuiltTool(), "nib", BuiltBundle() + "/Contents/Resources/en.lproj/" + nib, "InfoDialog"});
    EXPECT_EQ(result.code, 0) << result.err;
    std::vector<std::string> controls;
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t place = line.find(" at (");
        const std::size_t size = line.find(" x ", place);
        const std::size_t rest = line.find(' ', size + 3);
        if (line.find("IBCarbon") != std::string::npos)
            controls.push_back(line.substr(0, place) + (rest == std::string::npos ? "" : line.substr(rest)));
    }
    return controls;
}

TEST(DialogNibs, DifferInTheKnobOptionAlone)
{
    std::vector<std::string> plain = ControlsOf("Info.nib");
    std::vector<std::string> knob = ControlsOf("InfoKnob.nib");
    const auto without = [](std::vector<std::string> controls, const std::string& signature) {
        const auto found = std::find_if(controls.begin(), controls.end(), [&](const std::string& control) {
            return control.find("'" + signature + "'") != std::string::npos;
        });
        EXPECT_NE(found, controls.end()) << signature;
        if (found != controls.end())
            controls.erase(found);
        return controls;
    };
    // The heading of the options is hidden where there are none.
    knob = without(without(knob, "KNOB"), "OPTS");
    EXPECT_THAT(without(plain, "OPTS"), testing::ElementsAreArray(knob));
    EXPECT_EQ(knob.size(), 8U);
}

TEST(DialogNibs, HideTheHeadingWhereThereIsNoOption)
{
    EXPECT_THAT(ControlsOf("Info.nib"), testing::Contains("  IBCarbonStaticText 'OPTS' 0 \"Options\" hidden"));
    EXPECT_THAT(ControlsOf("InfoKnob.nib"), testing::Contains("  IBCarbonStaticText 'OPTS' 0 \"Options\""));
}

} // namespace
