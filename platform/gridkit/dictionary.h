#pragma once

#include <stdint.h>

#include "gridkit/export.h"
#include "gridkit/report.h"

#ifdef __cplusplus
extern "C" {
#endif

// Records with a self-describing dictionary (MIF encoding). A design lists the typed fields of a
// record; a dictionary holds designs and has a text form, by which any reader takes an encoded
// record apart (gridkit/record_decoder.h). Every operation answers a null argument with a report.

// Type codes of a design's fields, with what follows the code, and the field's C type in a record.
enum gkd_FieldType {
  gkd_Enumeration = 3,    // name, item names, (char*)0     int32_t, the item's number from 0
  gkd_Character = 8,      // name                           char
  gkd_Integer = 12,       // name                           int32_t
  gkd_Double = 14,        // name                           double
  gkd_DoubleArray = 270,  // name, int count from 1         double[count]
  gkd_DoubleVector =
      526  // name                           struct { int32_t count; double* elements; }
};

// Dictionaries belong to the toolkit: gkd_ReleaseDictionaries of the thread that made them ends
// them, with the designs that still belong to them.
typedef struct gkd_Dictionary gkd_Dictionary;

// A design. Only the name is for callers to read.
typedef struct gkd_Design {
  const char* name;
} gkd_Design;

// A new, empty dictionary of this thread.
GRIDKIT_API gkd_Dictionary* gkd_DictionaryCreate(gke_Report** err);

// A new design that belongs to the dictionary's toolkit until it is destroyed. Behind the slot
// stands the list of fields: an int type code, then what the table above says, ..., closed by the
// int 0. Names consist of letters, digits, '_' and '.', and a field's name occurs once. Null and a
// report for anything else.
GRIDKIT_API gkd_Design* gkd_DesignCreate(gkd_Dictionary* dictionary, const char* name,
                                         gke_Report** err, ...);

// Registers a design in the dictionary; a second one of its name is refused.
GRIDKIT_API void gkd_DictionaryAddDesign(gkd_Dictionary* dictionary, gkd_Design* design,
                                         gke_Report** err);

// The text form of a dictionary with the designs added to it, in their order: a new heap text, the
// caller's. It consists of lines, each ended by one line feed, of words with one blank between:
//   gridkit-dictionary 1                 the form and its version, the first line
//   design NAME                          begins a design; its fields follow, at least one
//   enum NAME ITEM ITEM ...              the items number 0, 1, ...
//   char NAME
//   int NAME
//   double NAME
//   double[COUNT] NAME                   COUNT in decimal, from 1
//   double[*] NAME                       a vector
//   end                                  the last line
// Names and items are 1 to 255 letters, digits, '_' and '.'. Names of designs, of the fields of a
// design and of the items of an enumeration occur once. There are at most 256 designs in a
// dictionary, 1000 fields in a design, 256 items in an enumeration and 1048576 bytes in the text.
GRIDKIT_API char* gkd_DictionaryEncodeToString(const gkd_Dictionary* dictionary, gke_Report** err);

// The number of bytes of a record's encoded form; -1 and a report for a vector with a negative
// count, or with elements that are missing, or for more than 2147483647 bytes. The record lies in
// memory as the C compiler lays out a struct of the fields' types.
GRIDKIT_API int32_t gkd_ObjectSize(const void* object, const gkd_Design* design, gke_Report** err);

// Writes the encoded form, of as many bytes as gkd_ObjectSize says: the fields in order without
// gaps, little-endian; an enumeration and an integer in 4 bytes, a character in 1, a double in 8
// (IEEE 754), a vector as its count in 4 bytes and its elements. `reserved` is 0.
GRIDKIT_API void gkd_ConvertToMIF(int32_t reserved, const void* object, const gkd_Design* design,
                                  void* buffer, gke_Report** err);

// Frees a design, also out of its dictionary; null is nothing.
GRIDKIT_API void gkd_DesignDestroy(gkd_Design* design);

// Ends all dictionaries that this thread made, and their designs.
GRIDKIT_API void gkd_ReleaseDictionaries(void);

#ifdef __cplusplus
}
#endif
