// platform/desktop/x11/Selections.h
//
// Texts to and from other programs: the clipboard and the primary selection.
// @source ICCCM 2 (peer-to-peer communication by means of selections), 2.7.2 for long texts.
#pragma once

#include <deque>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include "platform/desktop/IDesktop.h"
#include "platform/desktop/x11/Connection.h"

class CSelections {
public:
    explicit CSelections(CConnection& connection) : m_connection(connection) {}
    CSelections(const CSelections&) = delete;
    CSelections& operator=(const CSelections&) = delete;

    /// @param time  the server's time of the input that led to it.
    void Offer(TextExchange where, std::string_view text, xcb_timestamp_t time);
    void Request(TextExchange where, std::uint32_t request, xcb_timestamp_t time);

    /// Takes an event that concerns a selection; false for any other.
    bool TakeEvent(const xcb_generic_event_t& event);
    /// Takes the answers that are complete: request and text.
    std::vector<std::pair<std::uint32_t, std::string>> TakeTexts();
    bool HasTexts() const { return !m_texts.empty(); }
    /// Gives up on who did not go on in time; answers when to ask again, below 0 for never.
    double Expire(double now);
    /// Answers all that is still waited for with nothing; the display is gone.
    void Abandon();

private:
    struct Exchange {
        std::string offered;
        bool owned = false;
        xcb_timestamp_t since = 0;
        struct Waiting {
            std::uint32_t request;
            xcb_timestamp_t time;
        };
        std::deque<Waiting> waiting; ///< The first one is being asked for.
        bool asked = false;
        bool latin = false; ///< Asked for Latin-1, UTF-8 having been refused.
        bool inParts = false;
        std::string received;
        double deadline = -1;
    };
    /// A long text on its way to another program.
    struct Transfer {
        xcb_window_t window;
        xcb_atom_t property, type;
        std::string text;
        std::size_t sent = 0;
        double deadline;
    };

    Exchange& ExchangeOf(TextExchange where) { return m_exchanges[static_cast<std::size_t>(where)]; }
    xcb_atom_t SelectionOf(const Exchange& exchange) const;
    xcb_atom_t PropertyOf(const Exchange& exchange) const;
    Exchange* FindBySelection(xcb_atom_t selection);

    void AskNext(Exchange& exchange);
    void Ask(Exchange& exchange);
    void Finish(Exchange& exchange, std::string text);
    void TakeAnswer(Exchange& exchange, const xcb_get_property_reply_t* reply);
    void TakeNotify(const xcb_selection_notify_event_t& event);
    void TakeRequest(const xcb_selection_request_event_t& event);
    bool TakeProperty(const xcb_property_notify_event_t& event);
    bool Convert(const Exchange& exchange, xcb_window_t window, xcb_atom_t target, xcb_atom_t property);
    void SendPart(std::list<Transfer>::iterator transfer);

    CConnection& m_connection;
    Exchange m_exchanges[2];
    std::list<Transfer> m_transfers;
    std::vector<std::pair<std::uint32_t, std::string>> m_texts;
};
