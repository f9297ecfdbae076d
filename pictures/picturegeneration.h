// What the two generations of stored pictures differ in.
#pragma once

#include "link/camerasp.h"

#include <QStringList>

#include <span>

/// Commands of one generation and the shape of its list. Two objects of it exist, for the life of the
/// process.
struct PictureGeneration {
    /// One column of the list.
    struct Column {
        const char* title; ///< translated in the context "PictureGeneration"
        int percent;       ///< of the row's width; 0: all that the other columns leave
        QString (*cell)(const protocol::PictureInfo& picture);
    };

    const char* windowTitle; ///< translated as above
    const char* captureButtonName;
    std::span<const Column> columns;
    int timeColumn;
    int sizeColumn;
    unsigned allPictures; ///< id that deletes all pictures

    protocol::RecordForm record;
    bool (CameraSp::*capture)();
    std::vector<protocol::RecordBytes> (CameraSp::*catalogue)();
    /// Into the client's picture folder.
    void (*download)(CameraSp& client, unsigned id, std::uint32_t size);

    [[nodiscard]] QString translatedTitle() const;
    [[nodiscard]] QStringList columnTitles() const;
    [[nodiscard]] protocol::PictureInfo parse(const protocol::RecordBytes& bytes) const;
    /// The texts of one row, one per column.
    [[nodiscard]] QStringList cells(const protocol::PictureInfo& picture) const;
};

extern const PictureGeneration originPictures;
extern const PictureGeneration v1Pictures;
