#pragma once

class QUrl;

// Whether the toolkit may be asked to fetch from there. An address that leads to this computer's
// disk has to name a regular file, or none at all: opening anything else may wait for ever (a pipe,
// a device). A file on another computer is not fetched as one: Windows would hand the player's
// credentials to whoever the document names. Addresses of the web pass.
bool mayBeFetched(const QUrl &url);
