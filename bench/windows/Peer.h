// bench/windows/Peer.h
//
// What a toolkit has to offer to be measured: a module with these three functions, loaded by
// PeerHost as a host loads a plug-in. The texts of the dialog are the same for all.
#pragma once

#define PEER_EXPORT extern "C" __attribute__((visibility("default")))

/// Makes the dialog and shows it; all that its toolkit needs is set up by the first call.
PEER_EXPORT void OpenDialog();
/// Disposes of the dialog.
PEER_EXPORT void CloseDialog();
/// Runs the toolkit's main loop for so long.
PEER_EXPORT void RunLoop(double seconds);

constexpr const char* kPeerTitle = "Corvane Audio Quillets for Mac";
constexpr const char* kPeerVersion = "Version 1.3 Build 261121";
constexpr const char* kPeerNotice = "Copyright © 2009-2011 Corvane Audio. All rights reserved.";
constexpr const char* kPeerOptions = "Options";
constexpr const char* kPeerKnobs = "Up / Down mouse control of circular knobs";
constexpr const char* kPeerHelp = "Help";
constexpr const char* kPeerCancel = "Cancel";
constexpr const char* kPeerOk = "OK";

/// Where each text of the dialog stands, in pixels of its window, as in InfoKnob.nib.
struct PeerPlace {
    int x, y, width, height;
};
constexpr int kPeerWidth = 500;
constexpr int kPeerHeight = 246;
constexpr PeerPlace kTitlePlace = {136, 22, 344, 34};
constexpr PeerPlace kVersionPlace = {136, 60, 344, 16};
constexpr PeerPlace kNoticePlace = {136, 82, 344, 34};
constexpr PeerPlace kOptionsPlace = {20, 146, 460, 16};
constexpr PeerPlace kKnobsPlace = {20, 168, 460, 18};
constexpr PeerPlace kHelpPlace = {20, 203, 100, 26};
constexpr PeerPlace kCancelPlace = {268, 203, 100, 26};
constexpr PeerPlace kOkPlace = {380, 203, 100, 26};
