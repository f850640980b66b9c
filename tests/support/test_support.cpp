#include "test_support/test_support.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace test_support {

ScratchDir::ScratchDir() {
    QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/tdm-test-XXXXXX"));
    dir.setAutoRemove(false);
    path_ = dir.path();
}

ScratchDir::~ScratchDir() {
    // Tests may leave read-only or odd entries behind; make them removable.
    QProcess::execute(QStringLiteral("chmod"),
                      {QStringLiteral("-R"), QStringLiteral("u+rwx"), path_});
    QDir(path_).removeRecursively();
}

void make_dirs(QString const& path) {
    ASSERT_TRUE(QDir().mkpath(path)) << path.toStdString();
}

void write_file(QString const& path, QByteArray const& content) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    file.write(content);
}

void write_raw_file(QByteArray const& path, QByteArray const& content) {
    for (int slash = path.indexOf('/', 1); slash > 0; slash = path.indexOf('/', slash + 1))
        ::mkdir(path.left(slash).constData(), 0755);
    int const fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ASSERT_GE(fd, 0) << path.constData();
    EXPECT_EQ(::write(fd, content.constData(), static_cast<size_t>(content.size())),
              content.size());
    ::close(fd);
}

QByteArray read_file(QString const& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

bool file_exists(QString const& path) {
    return QFileInfo::exists(path);
}

namespace {

ToolRun finish(QProcess& process) {
    ToolRun result;
    if (!process.waitForFinished(120000)) {
        ADD_FAILURE() << "the tool did not finish";
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.exit_code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

} // namespace

ToolRun run_program(QString const& program, QStringList const& arguments,
                    QString const& working_dir) {
    QProcess process;
    process.setWorkingDirectory(working_dir);
    process.start(program, arguments);
    return finish(process);
}

ToolRun run_tool(QStringList const& arguments, QString const& working_dir,
                 QString const& shell_prefix) {
    if (shell_prefix.isEmpty())
        return run_program(QStringLiteral(TDM_TOOL), arguments, working_dir);
    QProcess process;
    process.setWorkingDirectory(working_dir);
    QStringList shell_arguments = {QStringLiteral("-c"),
                                   shell_prefix + QStringLiteral("; exec \"$0\" \"$@\""),
                                   QStringLiteral(TDM_TOOL)};
    process.start(QStringLiteral("bash"), shell_arguments + arguments);
    return finish(process);
}

QString XmlElement::attribute(QString const& name) const {
    for (auto const& attribute : attributes)
        if (attribute.first == name)
            return attribute.second;
    return QString();
}

bool XmlElement::has_attribute(QString const& name) const {
    for (auto const& attribute : attributes)
        if (attribute.first == name)
            return true;
    return false;
}

QList<XmlElement> XmlElement::all(QString const& wanted) const {
    QList<XmlElement> found;
    for (XmlElement const& child : children) {
        if (child.tag == wanted)
            found.append(child);
        found.append(child.all(wanted));
    }
    return found;
}

XmlElement read_xml(QString const& path) {
    QFile file(path);
    XmlElement document;
    if (!file.open(QIODevice::ReadOnly)) {
        ADD_FAILURE() << "cannot open " << path.toStdString();
        return document;
    }
    QXmlStreamReader xml(&file);
    xml.setNamespaceProcessing(false);
    QList<XmlElement*> stack{&document};
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            XmlElement element;
            element.tag = xml.qualifiedName().toString();
            for (auto const& attribute : xml.attributes())
                element.attributes.append(
                    {attribute.qualifiedName().toString(), attribute.value().toString()});
            stack.last()->children.append(element);
            stack.append(&stack.last()->children.last());
        } else if (xml.isEndElement()) {
            stack.removeLast();
        } else if (xml.isCharacters()) {
            stack.last()->text += xml.text();
        }
    }
    if (xml.hasError())
        ADD_FAILURE() << path.toStdString() << ":" << xml.lineNumber() << ": "
                      << xml.errorString().toStdString();
    return document.children.isEmpty() ? XmlElement() : document.children.first();
}

namespace {

QString describe(XmlElement const& element) {
    QString text = QLatin1Char('<') + element.tag;
    for (auto const& attribute : element.attributes)
        text += QStringLiteral(" %1=\"%2\"").arg(attribute.first, attribute.second);
    return text + QLatin1Char('>');
}

QString difference_at(XmlElement const& expected, XmlElement const& actual, QString const& path) {
    QString const here = path + QLatin1Char('/') + expected.tag;
    auto sorted = [](XmlElement const& element) {
        auto attributes = element.attributes;
        std::sort(attributes.begin(), attributes.end());
        return attributes;
    };
    if (expected.tag != actual.tag || sorted(expected) != sorted(actual))
        return QStringLiteral("at %1:\n  expected %2\n  actual   %3")
            .arg(here, describe(expected), describe(actual));
    if (expected.children.size() != actual.children.size())
        return QStringLiteral("at %1: expected %2 children, found %3")
            .arg(here)
            .arg(expected.children.size())
            .arg(actual.children.size());
    for (int i = 0; i < expected.children.size(); ++i) {
        QString const found = difference_at(expected.children[i], actual.children[i],
                                            here + QStringLiteral("[%1]").arg(i));
        if (!found.isEmpty())
            return found;
    }
    return QString();
}

} // namespace

QString difference(XmlElement const& expected, XmlElement const& actual) {
    return difference_at(expected, actual, QString());
}

QString shared_dir() {
    QString const dir = QStringLiteral(TDM_SHARED_DIR);
    return QFileInfo(dir + QStringLiteral("/isoxml/xsd")).exists() ? dir : QString();
}

QString validate_set(QString const& dir, bool& valid) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(shared_dir() + QStringLiteral("/tools/validate-taskdata"), {dir});
    process.waitForFinished(120000);
    valid = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return QString::fromUtf8(process.readAll());
}

} // namespace test_support
