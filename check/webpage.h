#pragma once

class QByteArray;

// Whether a file begins as a page of the web does. Servers send one in place of a file that they do
// not have, or that they show only behind a login.
bool isWebPage(const QByteArray &bytes);
