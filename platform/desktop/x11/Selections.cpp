// platform/desktop/x11/Selections.cpp
//
// One question at a time for each selection; every one is answered, if need be with nothing.
#include "platform/desktop/x11/Selections.h"

#include <algorithm>

#include "platform/base/Clock.h"
#include "platform/base/Text.h"

namespace {

constexpr double kPatience = 3;                 ///< Seconds without a sign of life from the other side.
constexpr std::size_t kLargestPart = 1U << 18;  ///< Of a text that goes in parts.
constexpr std::size_t kLongestText = 64U << 20; ///< More than anybody pastes; the rest is left out.

std::string Utf8OfLatin(std::string_view latin)
{
    std::string text;
    for (const char byte : latin)
        AppendUtf8(text, static_cast<unsigned char>(byte));
    return text;
}

/// What Latin-1 has of a text; a question mark for the rest.
std::string LatinOf(std::string_view utf8)
{
    std::string latin;
    for (std::size_t position = 0; position < utf8.size();) {
        const char32_t letter = NextCodePoint(utf8, position);
        latin += letter <= 0xFF ? static_cast<char>(letter) : '?';
    }
    return latin;
}

/// Other programs may send anything; windows take valid UTF-8 only.
std::string ValidText(std::string text)
{
    while (!text.empty() && text.back() == '\0') // some count the end of a C string
        text.pop_back();
    return CountUtf16Units(text) ? text : Utf8OfLatin(text);
}

} // namespace

xcb_atom_t CSelections::SelectionOf(const Exchange& exchange) const
{
    return &exchange == &m_exchanges[static_cast<std::size_t>(TextExchange::Clipboard)]
               ? m_connection[Atom::Clipboard]
               : static_cast<xcb_atom_t>(XCB_ATOM_PRIMARY);
}

xcb_atom_t CSelections::PropertyOf(const Exchange& exchange) const
{
    return m_connection[SelectionOf(exchange) == XCB_ATOM_PRIMARY ? Atom::SelectionText : Atom::ClipboardText];
}

CSelections::Exchange* CSelections::FindBySelection(xcb_atom_t selection)
{
    for (Exchange& exchange : m_exchanges)
        if (SelectionOf(exchange) == selection)
            return &exchange;
    return nullptr;
}

void CSelections::Offer(TextExchange where, std::string_view text, xcb_timestamp_t time)
{
    Exchange& exchange = ExchangeOf(where);
    const bool owned = exchange.owned;
    exchange.offered.assign(text);
    exchange.owned = !text.empty();
    exchange.since = time;
    if (exchange.owned || owned)
        xcb_set_selection_owner(m_connection.Get(), exchange.owned ? m_connection.Leader() : XCB_NONE,
                                SelectionOf(exchange), time);
}

void CSelections::Request(TextExchange where, std::uint32_t request, xcb_timestamp_t time)
{
    Exchange& exchange = ExchangeOf(where);
    if (exchange.owned) {
        m_texts.emplace_back(request, exchange.offered);
        return;
    }
    exchange.waiting.push_back({request, time});
    if (!exchange.asked)
        AskNext(exchange);
}

void CSelections::AskNext(Exchange& exchange)
{
    exchange.asked = !exchange.waiting.empty();
    exchange.latin = exchange.inParts = false;
    exchange.received.clear();
    exchange.deadline = -1;
    if (exchange.asked)
        Ask(exchange);
}

void CSelections::Ask(Exchange& exchange)
{
    exchange.deadline = Clock::Now() + kPatience;
    const xcb_atom_t target =
        exchange.latin ? static_cast<xcb_atom_t>(XCB_ATOM_STRING) : m_connection[Atom::Utf8String];
    xcb_delete_property(m_connection.Get(), m_connection.Leader(), PropertyOf(exchange));
    xcb_convert_selection(m_connection.Get(), m_connection.Leader(), SelectionOf(exchange), target,
                          PropertyOf(exchange), exchange.waiting.front().time);
}

void CSelections::Finish(Exchange& exchange, std::string text)
{
    if (!exchange.asked)
        return;
    m_texts.emplace_back(exchange.waiting.front().request, std::move(text));
    exchange.waiting.pop_front();
    AskNext(exchange);
}

std::vector<std::pair<std::uint32_t, std::string>> CSelections::TakeTexts()
{
    return std::exchange(m_texts, {});
}

bool CSelections::TakeEvent(const xcb_generic_event_t& event)
{
    switch (event.response_type & 0x7F) {
    case XCB_SELECTION_NOTIFY:
        TakeNotify(reinterpret_cast<const xcb_selection_notify_event_t&>(event));
        return true;
    case XCB_SELECTION_REQUEST:
        TakeRequest(reinterpret_cast<const xcb_selection_request_event_t&>(event));
        return true;
    case XCB_SELECTION_CLEAR:
        if (Exchange* const exchange =
                FindBySelection(reinterpret_cast<const xcb_selection_clear_event_t&>(event).selection)) {
            exchange->owned = false;
            exchange->offered.clear();
        }
        return true;
    case XCB_PROPERTY_NOTIFY:
        return TakeProperty(reinterpret_cast<const xcb_property_notify_event_t&>(event));
    default:
        return false;
    }
}

void CSelections::TakeNotify(const xcb_selection_notify_event_t& event)
{
    Exchange* const exchange = FindBySelection(event.selection);
    if (!exchange || !exchange->asked || exchange->inParts)
        return;
    if (event.property == XCB_NONE) {
        if (exchange->latin)
            return Finish(*exchange, {});
        exchange->latin = true;
        return Ask(*exchange);
    }
    const auto cookie = m_connection.AskProperty(m_connection.Leader(), event.property, true, kLongestText);
    m_connection.Await(cookie.sequence, [this, exchange](void* reply) {
        TakeAnswer(*exchange, static_cast<const xcb_get_property_reply_t*>(reply));
    });
}

void CSelections::TakeAnswer(Exchange& exchange, const xcb_get_property_reply_t* reply)
{
    if (!exchange.asked)
        return;
    if (reply && reply->type == m_connection[Atom::Incr]) {
        exchange.inParts = true; // it was deleted with the reading, which starts the other side
        exchange.deadline = Clock::Now() + kPatience;
        return;
    }
    std::string bytes = CConnection::BytesOf(reply);
    if (!exchange.inParts)
        return Finish(exchange, ValidText(exchange.latin ? Utf8OfLatin(bytes) : std::move(bytes)));
    if (bytes.empty())
        return Finish(exchange,
                      ValidText(exchange.latin ? Utf8OfLatin(exchange.received) : std::move(exchange.received)));
    exchange.deadline = Clock::Now() + kPatience;
    if (exchange.received.size() + bytes.size() <= kLongestText)
        exchange.received += bytes;
}

bool CSelections::TakeProperty(const xcb_property_notify_event_t& event)
{
    if (event.state == XCB_PROPERTY_DELETE) {
        const auto found = std::find_if(m_transfers.begin(), m_transfers.end(), [&](const Transfer& transfer) {
            return transfer.window == event.window && transfer.property == event.atom;
        });
        if (found == m_transfers.end())
            return false;
        SendPart(found);
        return true;
    }
    for (Exchange& exchange : m_exchanges) {
        if (event.window != m_connection.Leader() || event.atom != PropertyOf(exchange))
            continue;
        if (exchange.inParts) {
            const auto cookie = m_connection.AskProperty(event.window, event.atom, true, kLongestText);
            m_connection.Await(cookie.sequence, [this, &exchange](void* reply) {
                if (exchange.inParts)
                    TakeAnswer(exchange, static_cast<const xcb_get_property_reply_t*>(reply));
            });
        }
        return true;
    }
    return false;
}

void CSelections::TakeRequest(const xcb_selection_request_event_t& event)
{
    Exchange* const exchange = FindBySelection(event.selection);
    xcb_selection_notify_event_t answer = {};
    answer.response_type = XCB_SELECTION_NOTIFY;
    answer.time = event.time;
    answer.requestor = event.requestor;
    answer.selection = event.selection;
    answer.target = event.target;
    const xcb_atom_t property = event.property != XCB_NONE ? event.property : event.target; // clients of old
    if (exchange && exchange->owned && Convert(*exchange, event.requestor, event.target, property))
        answer.property = property;
    xcb_send_event(m_connection.Get(), 0, event.requestor, 0, reinterpret_cast<const char*>(&answer));
}

bool CSelections::Convert(const Exchange& exchange, xcb_window_t window, xcb_atom_t target, xcb_atom_t property)
{
    const CConnection& names = m_connection;
    const xcb_atom_t utf8 = names[Atom::Utf8String];
    if (target == names[Atom::Targets]) {
        m_connection.SetWords(window, property, XCB_ATOM_ATOM,
                              {names[Atom::Targets], names[Atom::Timestamp], utf8, names[Atom::PlainUtf8],
                               names[Atom::Plain], names[Atom::Text], XCB_ATOM_STRING});
        return true;
    }
    if (target == names[Atom::Timestamp]) {
        m_connection.SetWords(window, property, XCB_ATOM_INTEGER, {exchange.since});
        return true;
    }
    const bool latin = target == XCB_ATOM_STRING;
    if (!latin && target != utf8 && target != names[Atom::Text] && target != names[Atom::PlainUtf8] &&
        target != names[Atom::Plain])
        return false;
    const xcb_atom_t type = target == names[Atom::Text] ? utf8 : target;
    std::string text = latin ? LatinOf(exchange.offered) : exchange.offered;
    const std::size_t part = std::min(kLargestPart, m_connection.LongestRequest() / 2);
    if (text.size() <= part) {
        m_connection.SetText(window, property, type, text);
        return true;
    }
    // Its end may be watched already, where it is a parent of ours.
    constexpr std::uint32_t kEvents[] = {XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_change_window_attributes(m_connection.Get(), window, XCB_CW_EVENT_MASK, kEvents);
    m_connection.SetWords(window, property, names[Atom::Incr], {static_cast<std::uint32_t>(text.size())});
    m_transfers.push_back({window, property, type, std::move(text), 0, Clock::Now() + kPatience});
    return true;
}

void CSelections::SendPart(std::list<Transfer>::iterator transfer)
{
    const std::size_t part = std::min(kLargestPart, m_connection.LongestRequest() / 2);
    const std::string_view rest = std::string_view(transfer->text).substr(transfer->sent, part);
    m_connection.SetText(transfer->window, transfer->property, transfer->type, rest); // an empty one ends it
    transfer->sent += rest.size();
    transfer->deadline = Clock::Now() + kPatience;
    if (!rest.empty())
        return;
    constexpr std::uint32_t kEvents[] = {XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    if (transfer->window != m_connection.Leader())
        xcb_change_window_attributes(m_connection.Get(), transfer->window, XCB_CW_EVENT_MASK, kEvents);
    m_transfers.erase(transfer);
}

double CSelections::Expire(double now)
{
    double next = -1;
    const auto consider = [&next](double deadline) {
        if (deadline >= 0 && (next < 0 || deadline < next))
            next = deadline;
    };
    m_transfers.remove_if([now](const Transfer& transfer) { return transfer.deadline <= now; });
    for (const Transfer& transfer : m_transfers)
        consider(transfer.deadline);
    for (Exchange& exchange : m_exchanges) {
        if (exchange.asked && exchange.deadline <= now)
            Finish(exchange, {}); // half a text is worse than none
        if (exchange.asked)
            consider(exchange.deadline);
    }
    return next;
}

void CSelections::Abandon()
{
    m_transfers.clear();
    for (Exchange& exchange : m_exchanges) {
        for (const Exchange::Waiting& waiting : exchange.waiting)
            m_texts.emplace_back(waiting.request, std::string());
        exchange = {};
    }
}
