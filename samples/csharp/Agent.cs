// KELUtils from C#: reads the agent ID, encrypts a setting, schedules a job.
//
//   csc /platform:x86 Agent.cs ..\..\bindings\KELUtils.cs        (or mcs)
//
// The library has 32 bits, so the program must run as one of 32 bits too: /platform:x86, not "any CPU". KELUtils.cs declares
// every export.
using System;
using System.ComponentModel;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;

static class Agent
{
    const uint AlteredSearchPath = 8;  // LOAD_WITH_ALTERED_SEARCH_PATH

    [DllImport("kernel32.dll", CharSet = CharSet.Unicode, SetLastError = true)]
    static extern IntPtr LoadLibraryEx(string path, IntPtr file, uint flags);

    // KELUtils.cs names the library without a folder. Loaded once by its full path, it is found by that name. The program
    // is in a folder of the product, such as C:\Orvane\Sample; the library in the folder KELUtils next to it.
    static void LoadLibrary(string path)
    {
        if (LoadLibraryEx(path, IntPtr.Zero, AlteredSearchPath) == IntPtr.Zero)
            throw new Win32Exception(Marshal.GetLastWin32Error(), "cannot load " + path);
    }

    static void Check(string call, uint result)
    {
        if (result != KELUtils.KE_SUCCESS) throw new InvalidOperationException(call + ": error " + result);
    }

    // A getter needs a buffer that is larger than its value, and does not return the value's length.
    static string AgentId()
    {
        uint result = KELUtils.KE_BUFFER_TOO_SMALL;
        byte[] id = null;
        for (int size = 64; result == KELUtils.KE_BUFFER_TOO_SMALL && size <= 65536; size *= 4)
        {
            id = new byte[size];
            result = KELUtils.KE_GetAgentID(id, size);
        }
        if (result == KELUtils.KE_STORE_UNUSABLE) throw new InvalidOperationException("this computer has no agent ID yet");
        Check("KE_GetAgentID", result);
        return Encoding.Default.GetString(id, 0, Array.IndexOf(id, (byte)0));
    }

    // With a null output the library returns the required size. Its output has no terminating zero.
    static string Setting(string plain)
    {
        byte[] text = Encoding.Default.GetBytes(plain + "\0");
        int size = 0;
        uint result = KELUtils.KE_EncryptSetting(text, text.Length - 1, null, ref size);
        if (result != KELUtils.KE_BUFFER_TOO_SMALL) throw new InvalidOperationException("KE_EncryptSetting: error " + result);
        byte[] setting = new byte[size];
        Check("KE_EncryptSetting", KELUtils.KE_EncryptSetting(text, text.Length - 1, setting, ref size));
        return Encoding.ASCII.GetString(setting, 0, size);
    }

    static int Main(string[] arguments)
    {
        try
        {
            string own = AppDomain.CurrentDomain.BaseDirectory;
            LoadLibrary(arguments.Length > 0 ? arguments[0]
                                             : Path.GetFullPath(Path.Combine(own, @"..\KELUtils\KELUtils.dll")));
            Console.WriteLine("agent ID: " + AgentId());
            string setting = Setting("secret");
            Console.WriteLine("setting of " + setting.Length + " characters: " + setting);
            Check("KE_SetPeriodicTask", KELUtils.KE_SetPeriodicTask("KEPLPMNG", "SAMPLE", "-check", 9003, 12 * 60, 0));
            Console.WriteLine("job 9003 is scheduled");
            return 0;
        }
        catch (Exception error)
        {
            Console.Error.WriteLine(error.Message);
            return 1;
        }
    }
}
