#pragma once
// Reading ESRI shapefiles (.shp with its .shx index) and dBASE tables (.dbf),
// built on shapelib. Each file is read whole at Open and closed again; the
// objects then hold plain copies of what the files said, owned by the file
// object, and every pointer they hand out lives as long as it does.
//
// How the files map onto the classes:
// - Every record of a .shp is one EsriRecord, in file order, so that record
//   i belongs to row i of the table beside it. A record holds one shape, or
//   none when its shape is null or can't be read.
// - Point and MultiPoint shapes (codes 1, 8 and their Z and M variants 11, 18,
//   21, 28) are EsriPointShape; PolyLine, Polygon and MultiPatch shapes (3, 5,
//   31 and the variants 13, 15, 23, 25) are EsriPolygonShape, with their
//   parts. shapeType() is the code as the record has it, so a PolyLineZ is 13
//   and not 3. Only x and y are kept; Z and M values are dropped.
// - Every part of a Polygon shape (5, 15, 25) is a ring of its own, outer
//   ring or hole alike: GetPolygons() lists them all, in file order, each
//   with the record it came from. Lines and MultiPatch surfaces give no rings.
// - dBASE columns: "C" is a character field (its text without the blanks
//   around it); "N" or "F" without decimals and at most 9 digits wide is an
//   integer field, any other "N" or "F" a number field; "L" is a logical
//   field; every other kind ("D" dates among them) is a character field
//   holding the text as stored. An empty value (blanks, "*" overflow marks,
//   "?" for an unknown logical) is no field at all: GetField gives null.
// - A missing or unreadable table has no columns and no rows; a table that
//   ends early has the rows that are wholly there.
// Numbers are parsed independently of the process locale, and shapelib's own
// complaints go to the debug log. Only regular files are opened, so a FIFO or
// device named like a shapefile can't block a run.

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

// One vertex: x is the first coordinate (longitude, or easting), y the second.
struct EsriPoint {
    double x = 0.0;
    double y = 0.0;
};

class EsriShape {
public:
    explicit EsriShape(int type) : type_(type) {}
    virtual ~EsriShape() = default;
    // The shapefile type code: 1 Point, 3 PolyLine, 5 Polygon, 8 MultiPoint,
    // +10 for Z, +20 for M, 31 MultiPatch.
    virtual int shapeType() const { return type_; }

private:
    int type_;
};

// A Point or MultiPoint shape.
class EsriPointShape : public EsriShape {
public:
    EsriPointShape(int type, std::vector<EsriPoint> points)
        : EsriShape(type), points_(std::move(points)) {}
    unsigned GetNumberOfPoints() const { return static_cast<unsigned>(points_.size()); }
    EsriPoint const* GetPoints() const { return points_.data(); }

private:
    std::vector<EsriPoint> points_;
};

// A PolyLine, Polygon or MultiPatch shape: its vertices, cut into parts.
class EsriPolygonShape : public EsriShape {
public:
    // `part_starts`: the index of each part's first vertex, ascending.
    EsriPolygonShape(int type, std::vector<EsriPoint> points, std::vector<unsigned> part_starts)
        : EsriShape(type), points_(std::move(points)), part_starts_(std::move(part_starts)) {}
    unsigned GetNumberOfParts() const { return static_cast<unsigned>(part_starts_.size()); }
    // The vertices of part `part`; false, leaving both outputs alone, when
    // there is no such part or it has no vertices.
    virtual bool getPartPoints(unsigned part, EsriPoint const*& points, unsigned& count) const;

private:
    std::vector<EsriPoint> points_;
    std::vector<unsigned> part_starts_;
};

class EsriRecord {
public:
    explicit EsriRecord(std::unique_ptr<EsriShape> shape);
    unsigned GetNumberOfShapes() const { return shape_ ? 1u : 0u; }
    // Null when there is no shape of that index.
    EsriShape const* GetShape(unsigned index) const;

private:
    std::unique_ptr<EsriShape> shape_;
};

// One polygon ring: its vertices, which the shape they belong to holds.
class EsriPolygonReference {
public:
    EsriPolygonReference(unsigned record, EsriPoint const* points, unsigned count)
        : record_(record), points_(points), count_(count) {}
    unsigned GetNumberOfPoints() const { return count_; }
    EsriPoint const* GetPoints() const { return points_; }
    unsigned record() const { return record_; }

private:
    unsigned record_;
    EsriPoint const* points_;
    unsigned count_;
};

class EsriShapeFile {
public:
    EsriShapeFile() = default;
    ~EsriShapeFile() = default;
    // Copies would point into the original's shapes; moving keeps them valid.
    EsriShapeFile(EsriShapeFile const&) = delete;
    EsriShapeFile& operator=(EsriShapeFile const&) = delete;
    EsriShapeFile(EsriShapeFile&&) = default;
    EsriShapeFile& operator=(EsriShapeFile&&) = default;

    // Reads the shapefile at `path` and its index beside it (.shx, or .SHX),
    // replacing what was read before. False, with nothing held, when either
    // is missing or not a shapefile. The flag is accepted for callers that
    // pass it and has no effect.
    bool Open(QString const& path, bool);

    // Every polygon ring of the file, in file order.
    std::vector<EsriPolygonReference> const& GetPolygons() const { return polygons_; }
    // The record, and so the table row, of ring `ring`; beyond the rings, a
    // row that no table has.
    unsigned GetPolygonRecord(int ring) const;

    unsigned GetNumberOfRecords() const { return static_cast<unsigned>(records_.size()); }
    // Null beyond the last record.
    EsriRecord const* GetRecord(unsigned index) const;

private:
    std::vector<EsriRecord> records_;
    std::vector<EsriPolygonReference> polygons_;
};

// A column of a table; the name comes first, NUL-terminated.
struct EsriDbfFieldDescriptor {
    char name[12] = {};
    char type = 'C'; // the dBASE kind letter as stored
    int width = 0;
    int decimals = 0;
};

// One value of a row; its dynamic class tells the column's kind.
class EsriDbfField {
public:
    virtual ~EsriDbfField() = default;
};

class EsriDbfCharacterField : public EsriDbfField {
public:
    explicit EsriDbfCharacterField(QByteArray const& text) : text_(text) {}
    // NUL-terminated bytes as stored (no encoding is assumed).
    char const* GetCharacters() const { return text_.constData(); }

private:
    QByteArray text_;
};

class EsriDbfIntegerField : public EsriDbfField {
public:
    explicit EsriDbfIntegerField(int value) : value_(value) {}
    int GetValue() const { return value_; }

private:
    int value_;
};

class EsriDbfLogicalField : public EsriDbfField {
public:
    explicit EsriDbfLogicalField(bool value) : value_(value) {}
    bool GetValue() const { return value_; }

private:
    bool value_;
};

class EsriDbfNumberField : public EsriDbfField {
public:
    explicit EsriDbfNumberField(double value) : value_(value) {}
    double GetValue() const { return value_; }

private:
    double value_;
};

class EsriDbfRecord {
public:
    explicit EsriDbfRecord(std::vector<std::unique_ptr<EsriDbfField>> fields)
        : fields_(std::move(fields)) {}
    unsigned GetNumberOfFields() const { return static_cast<unsigned>(fields_.size()); }
    // Null for an empty value and beyond the last column.
    EsriDbfField const* GetField(unsigned index) const;

private:
    std::vector<std::unique_ptr<EsriDbfField>> fields_;
};

class EsriDbfFile {
public:
    EsriDbfFile() = default;
    ~EsriDbfFile() = default;

    // Reads the table at `path`, replacing what was read before. False, with
    // no columns and no rows, when it is missing or not a dBASE table. The
    // flag is accepted for callers that pass it and has no effect.
    bool Open(QString const& path, bool);

    unsigned GetNumberOfFieldDescriptors() const {
        return static_cast<unsigned>(descriptors_.size());
    }
    // Null beyond the last column.
    EsriDbfFieldDescriptor const* GetFieldDescriptor(unsigned index) const;

    unsigned GetNumberOfRecords() const { return static_cast<unsigned>(records_.size()); }
    // Null beyond the last row.
    EsriDbfRecord const* GetRecord(unsigned index) const;

private:
    std::vector<EsriDbfFieldDescriptor> descriptors_;
    std::vector<EsriDbfRecord> records_;
};
