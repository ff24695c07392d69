// fuzz/TextEditorFuzz.cpp
//
// Any row of edits on any text: the text stays valid, the caret between graphemes, the length within its bound,
// and undoing everything gives back what was there before.
#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/Fuzz.h"
#include "platform/base/Text.h"
#include "platform/hitoolbox/windows/TextEditor.h"

namespace {

constexpr std::size_t kMaximumUnits = 300;

// Pieces that meet in surprising ways; any bytes come besides.
constexpr const char* kPieces[] = {
    "a",          " ",          "\n",   "\r", "\r\n",   "\u0301", "\u200D", "\U0001F469", "\U0001F1E9",
    "\U0001F1EA", "\U0001F3FD", "'",    ".",  "\u05D0", "\uAC00", "\u1100", "\u1161",     "\u2028",
    "\uFE0F",     "\u2764",     "word", "\t", "\u4E00", "\u30AB", "\u0E33", "\U000E0061",
};

std::string Piece(FuzzedDataProvider& data)
{
    return data.ConsumeBool() ? data.PickValueInArray(kPieces) : data.ConsumeRandomLengthString(12);
}

TextAnswer Decide(FuzzedDataProvider& data, CTextEditor& editor, const TextProposal& proposal, std::string& replacement)
{
    Require(proposal.location + proposal.length <= *CountUtf16Units(editor.Text()));
    Require(CountUtf16Units(proposal.text).has_value());
    Require(!editor.Type("no") && !editor.Undo()); // not while another change is being decided on
    switch (data.ConsumeIntegralInRange(0, 6)) {
    case 0:
        return TextAnswer::Refuse;
    case 1:
        replacement = Piece(data);
        return TextAnswer::Replace;
    case 2:
        return TextAnswer::DeleteOnly;
    case 3:
        (void)editor.SetText(Piece(data));
        return TextAnswer::Accept;
    default:
        return TextAnswer::Accept;
    }
}

void Step(FuzzedDataProvider& data, CTextEditor& editor)
{
    const auto unit = data.PickValueInArray({TextUnit::Grapheme, TextUnit::Word, TextUnit::Line});
    const auto place = [&] {
        return data.ConsumeIntegralInRange<std::size_t>(0, 400);
    };
    switch (data.ConsumeIntegralInRange(0, 11)) {
    case 0:
    case 1:
        (void)editor.Type(Piece(data));
        break;
    case 2:
        (void)editor.Paste(Piece(data) + Piece(data));
        break;
    case 3:
        (void)editor.DeleteBackward(unit);
        break;
    case 4:
        (void)editor.DeleteForward(unit);
        break;
    case 5:
        editor.Move(static_cast<TextMove>(data.ConsumeIntegralInRange(0, 9)),
                    data.ConsumeBool() ? Extend::Yes : Extend::No);
        break;
    case 6:
        editor.SelectUnit(place(), unit);
        break;
    case 7:
        editor.ExtendTo(place());
        break;
    case 8:
        editor.Select(place(), place());
        break;
    case 9:
        (void)editor.Undo();
        break;
    case 10:
        (void)editor.Redo();
        break;
    default:
        Require(!editor.Cut() || !editor.Options().password);
        break;
    }
}

void Check(const CTextEditor& editor)
{
    const std::string& text = editor.Text();
    Require(CountUtf16Units(text).has_value());
    for (const std::size_t place : {editor.Anchor(), editor.Caret()})
        Require(place <= text.size() && GraphemeStart(text, place) == place && GraphemeCeiling(text, place) == place);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider data(bytes, size);
    TextEditorOptions options;
    options.singleLine = data.ConsumeBool();
    options.password = data.ConsumeBool();
    options.maximumLength = kMaximumUnits;
    const bool decides = data.ConsumeBool();
    CTextEditor editor(options);
    if (decides)
        editor.SetProposalHandler([&](const TextProposal& proposal, std::string& replacement) {
            return Decide(data, editor, proposal, replacement);
        });
    const bool isSet = editor.SetText(Piece(data));
    const std::string start = editor.Text();
    Require(isSet || start.empty());
    while (data.remaining_bytes() > 0) {
        Step(data, editor);
        Check(editor);
        Require(*CountUtf16Units(editor.Text()) <= kMaximumUnits);
    }
    if (decides)
        return 0;
    const std::string end = editor.Text();
    std::size_t steps = 0;
    while (editor.Undo()) {
        Check(editor);
        ++steps;
    }
    Require(editor.Text() == start);
    for (; steps > 0; --steps)
        Require(editor.Redo());
    Require(editor.Text() == end);
    return 0;
}
