// The parts of the reference that the library itself writes. Each goes to the standard output.
#pragma once

// docs/records.md: one table for each record.
void PrintRecords();

// For docs/fault-reports.md: what each check of the codecs raises, and the result codes.
void PrintChecks();
void PrintResultCodes();

// docs/message.svg: a message with its arena.
void DrawMessage();
