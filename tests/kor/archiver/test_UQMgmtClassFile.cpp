// The stand-in storage server's management classes: the class file's lines, what is malformed and how it
// is reported, the default class, the built-in sample, and the choice of the file.
#include "interfaces/korarchiver.h"

#include "support/LogCheck.h"

#include <cstdio>
#include <memory>
#include <string>

namespace {

const CString NAME = L"classes.txt";

std::vector<std::string> details(const UQMgmtClassFile::Result& _result) {
    std::vector<std::string> texts;
    for (const UQErrno& error : _result.errors) {
        EXPECT_TRUE(error.mf_getData().mf_is(UQErrno::_E_::Format));
        texts.push_back(utf8(error.mf_getDetail()));
    }
    return texts;
}

std::string attribute(const UQQueryMgmtClassData& _data, const wchar_t* _pszKey) {
    UQAttributeList attributes(_data.mf_getAttributes());
    return utf8(attributes.mf_getAttributeValue(_pszKey));
}

struct ClassFileChoice {
    ~ClassFileChoice() { UQArchiverMain::mf_setMgmtClassFile(CString()); }
};

} // namespace

TEST(UQMgmtClassFile, AClassLineGivesNameDescriptionCommentAndAttributesInOrder) {
    const UQMgmtClassFile::Result result =
        UQMgmtClassFile::mf_readText("\xEF\xBB\xBF# comment\r\n\r\n@default\tA\r\nA\tFirst "
                                     "class\tW\tTwo\\nlines\tretainVers=30\tretainInit=EVENT\r\n"
                                     "B\tSecond\t!\t-\tretainVers=9999 (NOLIMIT)\tdestName=POOL\n",
                                     NAME);
    EXPECT_EQ(details(result), std::vector<std::string>());
    ASSERT_EQ(result.classes.size(), 2u);
    EXPECT_EQ(result.sDefaultClass, L"A");
    const UQQueryMgmtClassData& a = result.classes[0];
    EXPECT_EQ(a.mf_getName(), L"A");
    EXPECT_EQ(a.mf_getDescription(), L"First class");
    EXPECT_EQ(attribute(a, L"retainVers"), "30");
    EXPECT_EQ(attribute(a, L"retainInit"), "EVENT");
    CString sComment;
    const UQSeverity severity = a.mf_queryUserComment(sComment, 1);
    EXPECT_TRUE(severity.mf_isYellow());
    EXPECT_EQ(sComment, L"Two\r\nlines");
    EXPECT_EQ(attribute(result.classes[1], L"retainVers"), "9999 (NOLIMIT)");
}

TEST(UQMgmtClassFile, AClassWhoseCommentIsNotAnsweredThrowsOnTheQuery) {
    const UQMgmtClassFile::Result result =
        UQMgmtClassFile::mf_readText("B\tSecond\t!\t-\tretainVers=1\n", NAME);
    ASSERT_EQ(result.classes.size(), 1u);
    LogCheck log;
    CString sComment = L"left alone";
    EXPECT_EQ(thrownCategory([&] { result.classes[0].mf_queryUserComment(sComment, 1); }), "_E_::Resource");
    EXPECT_EQ(sComment, L"left alone");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQQueryMgmtClassData::mf_queryUserComment",
                                                  "Failure querying comment of management class 'B'"}}));
}

TEST(UQMgmtClassFile, MalformedLinesNameFileAndLineAndAreSkipped) {
    const UQMgmtClassFile::Result result = UQMgmtClassFile::mf_readText("A\tok\tI\t-\tretainVers=1\n"   // 1
                                                                        "short\tline\n"                 // 2
                                                                        "\tno name\tI\t-\tx=1\n"        // 3
                                                                        "DEFAULT\tx\tI\t-\tx=1\n"       // 4
                                                                        "A\tagain\tI\t-\tx=1\n"         // 5
                                                                        "C\tx\tZ\t-\tx=1\n"             // 6
                                                                        "D\tx\tI\t-\tnovalue\n"         // 7
                                                                        "E\tx\tI\t-\tx=1\tx=2\n"        // 8
                                                                        "F\tbad \xFF byte\tI\t-\tx=1\n" // 9
                                                                        "G\tcontrol\x01\tI\t-\tx=1\n"   // 10
                                                                        "@default\tMISSING\n"           // 11
                                                                        "@default\tA\n"                 // 12
                                                                        "@other\tA\n"                   // 13
                                                                        "H\tx\tI\t-\tbad key=1\n",      // 14
                                                                        NAME);
    EXPECT_EQ(
        details(result),
        (std::vector<std::string>{
            "classes.txt:2: expected name, description, comment severity, comment and at least one "
            "attribute, "
            "found 2 fields",
            "classes.txt:3: empty class name",
            "classes.txt:4: the name DEFAULT stands for the default class; name the class and use @default",
            "classes.txt:5: class 'A' is defined twice (first at line 1)",
            "classes.txt:6: bad comment severity 'Z' (I, W, E or !)",
            "classes.txt:7: bad attribute 'novalue' (key=value)",
            "classes.txt:8: attribute 'x' given twice",
            "classes.txt:9: invalid UTF-8",
            "classes.txt:10: control character",
            "classes.txt:12: a second @default (the first is at line 11)",
            "classes.txt:13: unknown directive '@other'",
            "classes.txt:14: bad attribute 'bad key=1' (key=value)",
            "classes.txt:11: default class 'MISSING' is not defined",
        }));
    ASSERT_EQ(result.classes.size(), 1u);
    EXPECT_EQ(result.sDefaultClass, L"");
}

TEST(UQMgmtClassFile, AnEmptyFileHasNoClassesAndNoDefault) {
    const UQMgmtClassFile::Result result = UQMgmtClassFile::mf_readText("", NAME);
    EXPECT_TRUE(result.classes.empty());
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(result.sDefaultClass, L"");
}

TEST(UQMgmtClassFile, AMissingFileThrowsAFileErrorNamingIt) {
    LogCheck log;
    std::string sDetail;
    try {
        UQMgmtClassFile::mf_read(L"no such classes.txt");
    } catch (const UQErrno& e) {
        EXPECT_TRUE(e.mf_getData().mf_is(UQErrno::_E_::File));
        sDetail = utf8(e.mf_getDetail());
    }
    EXPECT_EQ(sDetail.rfind("no such classes.txt: cannot open: ", 0), 0u) << sDetail;
    EXPECT_NE(sDetail.find("(errno "), std::string::npos) << sDetail;
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQMgmtClassFile::mf_read",
                                     "Failure opening management class file 'no such classes.txt'"}}));
}

TEST(UQMgmtClassFile, TheShippedSampleIsTheBuiltInOneAndHasEveryKindOfClass) {
    const UQMgmtClassFile::Result file = UQMgmtClassFile::mf_read(CString::FromUtf8(KOR_MGMT_CLASS_SAMPLE));
    const UQMgmtClassFile::Result builtIn =
        UQMgmtClassFile::mf_readText(UQMgmtClassFile::mf_getSampleText(), UQMgmtClassFile::SAMPLE_NAME);
    EXPECT_TRUE(file.errors.empty());
    EXPECT_TRUE(builtIn.errors.empty());
    ASSERT_GE(file.classes.size(), 6u);
    ASSERT_EQ(file.classes.size(), builtIn.classes.size());
    EXPECT_EQ(file.sDefaultClass, L"STANDARD");
    bool bEvent = false, bCreate = false, bNoLimit = false;
    for (std::size_t i = 0; i < file.classes.size(); ++i) {
        EXPECT_EQ(file.classes[i].mf_getName(), builtIn.classes[i].mf_getName());
        const std::string sInit = attribute(file.classes[i], L"retainInit");
        bEvent = bEvent || sInit == "EVENT";
        bCreate = bCreate || sInit == "CREATE";
        bNoLimit =
            bNoLimit || attribute(file.classes[i], L"retainVers").find("(NOLIMIT)") != std::string::npos;
        attribute(file.classes[i], L"retainMin");
        attribute(file.classes[i], L"destName");
    }
    EXPECT_TRUE(bEvent);
    EXPECT_TRUE(bCreate);
    EXPECT_TRUE(bNoLimit);
}

TEST(UQArchiverMain, WithoutAFileTheServerAnswersFromTheSample) {
    ClassFileChoice restore;
    UQArchiverMain::mf_setMgmtClassFile(CString());
    UQArray<UQQueryMgmtClassData*, UQQueryMgmtClassData*> classes;
    UQArchiverMain::mf_getMgmtClasses(classes, UQHost(), CString());
    EXPECT_GE(classes.GetSize(), 6);
    for (INT_PTR i = 0; i < classes.GetSize(); ++i)
        delete classes[i];
    std::unique_ptr<UQQueryMgmtClassData> pDefault(
        UQArchiverMain::mf_getMgmtClass(L"DEFAULT", UQHost(), CString()));
    EXPECT_EQ(pDefault->mf_getName(), L"DEFAULT");
    EXPECT_EQ(pDefault->mf_getDescription(), L"Standard migration of file server data");
    std::unique_ptr<UQQueryMgmtClassData> pScratch(
        UQArchiverMain::mf_getMgmtClass(L"SCRATCH", UQHost(), CString()));
    EXPECT_EQ(pScratch->mf_getName(), L"SCRATCH");
    LogCheck log;
    EXPECT_EQ(thrownCategory([] { UQArchiverMain::mf_getMgmtClass(L"scratch", UQHost(), CString()); }),
              "_E_::ItemNotFound");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQArchiverMain::mf_getMgmtClass",
                                                  "Management class 'scratch' not found"}}));
}

TEST(UQArchiverMain, AChosenFileWinsAndMalformedLinesAreLogged) {
    ClassFileChoice restore;
    const char* pszFile = "mgmt-class-choice.txt";
    FILE* pFile = std::fopen(pszFile, "wb");
    ASSERT_NE(pFile, nullptr);
    std::fputs("ONE\tOnly\tI\t-\tretainVers=1\nbroken\n", pFile);
    std::fclose(pFile);
    UQArchiverMain::mf_setMgmtClassFile(CString::FromUtf8(pszFile));
    EXPECT_EQ(UQArchiverMain::mf_getMgmtClassFile(), CString::FromUtf8(pszFile));
    UQArray<UQQueryMgmtClassData*, UQQueryMgmtClassData*> classes;
    LogCheck log;
    UQArchiverMain::mf_getMgmtClasses(classes, UQHost(), CString());
    ASSERT_EQ(classes.GetSize(), 1);
    EXPECT_EQ(classes[0]->mf_getName(), L"ONE");
    delete classes[0];
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', "UQArchiverMain::mf_getMgmtClasses",
                                     "Management class line skipped: mgmt-class-choice.txt:2: expected "
                                     "name, description, comment severity, comment and at least one "
                                     "attribute, found 1 fields"}}));
    std::remove(pszFile);
}
