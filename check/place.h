#pragma once

// Where something stands in a document, both from 1; 0: the document as a whole.
struct Place {
    int line = 0;
    int column = 0;
};
