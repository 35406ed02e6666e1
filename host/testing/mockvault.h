#pragma once

#include "host/idoxvault.h"

#include <gmock/gmock.h>

// A vault whose every operation is a gmock method; tests set what they need.
class MockVault : public IDoxVault
{
public:
    MOCK_METHOD(HRESULT, GetName, (QString &), (override));
    MOCK_METHOD(HRESULT, GetRootFolderPath, (QString &), (override));
    MOCK_METHOD(HRESULT, GetFileFromPath,
                (const QString &, std::shared_ptr<IDoxFile> &, std::shared_ptr<IDoxFolder> &), (override));
    MOCK_METHOD(HRESULT, GetFolderFromPath, (const QString &, std::shared_ptr<IDoxFolder> &), (override));
    MOCK_METHOD(HRESULT, GetFile, (std::int32_t, std::shared_ptr<IDoxFile> &), (override));
    MOCK_METHOD(HRESULT, GetFolder, (std::int32_t, std::shared_ptr<IDoxFolder> &), (override));
    MOCK_METHOD(HRESULT, CreateUtility, (std::int32_t, HostObjectPtr &), (override));
    MOCK_METHOD(HRESULT, ResolveReferenceVersions,
                (const std::vector<DoxReferenceQuery> &, std::int32_t, std::vector<std::int32_t> &), (override));
    MOCK_METHOD(HRESULT, GetCardVariableNames, (QStringList &), (override));
    MOCK_METHOD(HRESULT, GetErrorInfo, (HRESULT, QString &, QString &), (override));
    MOCK_METHOD(HRESULT, BrowseForFiles,
                (HostWindow, const QString &, const QString &, std::vector<std::shared_ptr<IDoxFile>> &,
                 std::vector<std::shared_ptr<IDoxFolder>> &),
                (override));
    MOCK_METHOD(HRESULT, BrowseForFolder, (HostWindow, const QString &, std::shared_ptr<IDoxFolder> &), (override));
};

// A vault that answers its root folder path and nothing else.
inline std::shared_ptr<testing::NiceMock<MockVault>> makeVaultWithRoot(const QString &root)
{
    auto vault = std::make_shared<testing::NiceMock<MockVault>>();
    ON_CALL(*vault, GetRootFolderPath(testing::_))
        .WillByDefault(testing::DoAll(testing::SetArgReferee<0>(root), testing::Return(S_OK)));
    ON_CALL(*vault, GetName(testing::_))
        .WillByDefault(testing::DoAll(testing::SetArgReferee<0>(QStringLiteral("Demo")), testing::Return(S_OK)));
    return vault;
}
