#pragma once

#include "tarvolumera/fatturapa/FattureElettronicheDB.h"
#include "tests/tarvolumera/SampleInvoice.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

inline CFattureElettronicheDB Read(const std::string &xml)
{
    CFattureElettronicheDB db;
    db.Load(xml, "prova.xml");
    return db;
}

inline std::vector<std::string> WarningsOf(const CFattureElettronicheDB &db)
{
    std::vector<std::string> texts;
    for (const InvoiceWarning &warning : db.Warnings()) texts.push_back(warning.text);
    return texts;
}

/// The detail of the refusal, "" when the text is read.
inline std::string RefusalOf(const std::string &xml)
{
    CFattureElettronicheDB db;
    try {
        db.Load(xml, "prova.xml");
    } catch (const InvoiceFileError &error) {
        EXPECT_EQ(error.Why(), InvoiceFileError::Reason::NotAnInvoice);
        EXPECT_STREQ(error.what(), "Impossibile caricare l'xml dal file :\n\nprova.xml");
        return error.Detail();
    }
    return {};
}
