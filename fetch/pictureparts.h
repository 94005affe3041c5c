#pragma once

#include <QByteArray>
#include <QSize>

// What can be told of a picture file by its parts, before anything is decoded. Bytes that are no
// file of the kind, or break off, are told as far as they go.

// The file that the toolkit decodes of an icon file: the PNG picture that its first entry holds.
// Any other bytes as they are.
QByteArray withoutIconAround(const QByteArray &bytes);

// The size of an icon file's first picture, which its entry may leave to the picture itself.
QSize sizeInIcon(const QByteArray &bytes);

// A PNG file with nothing in it but what decides about its looks. Texts and profiles are unpacked
// by the decoder, however large they get. Bytes of another kind as they are.
QByteArray withoutRestOfPng(const QByteArray &bytes);

// How many scans a JPEG file has: each goes over the whole picture.
int scansOfJpeg(const QByteArray &bytes);

// To how many pixels the data of a GIF file's first picture unpack. The decoder unpacks all of
// them, whatever the picture's size.
qint64 pixelsInGif(const QByteArray &bytes);

// Whether the data of a GIF file's first picture end before its last pixel.
bool breaksOffInGif(const QByteArray &bytes);
