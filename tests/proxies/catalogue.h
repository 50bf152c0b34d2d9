#pragma once

#include <string>
#include <vector>

/// What the device's services offer, name by name as they spell it. It is kept apart from the proxies and
/// from the tables that drive them, so that a name copied wrongly there shows.
struct CatalogueRow {
    /// Getters of one result, in the words of the services' list; empty where the list is silent.
    struct Getters {
        std::string result;
        std::vector<std::string> names;
    };

    std::string className;
    std::string service;
    std::string path;
    std::string interface;
    std::vector<std::string> commands;
    std::vector<Getters> getters;
    std::vector<std::string> asynchronous;
    std::vector<std::string> signalNames;
};

const std::vector<CatalogueRow> &catalogue();
